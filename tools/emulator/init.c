// The first process of the emulated machine: runs /program with the arguments from /arguments (each ends
// with a zero byte), its output on the second serial port, writes its exit status to the third, and turns
// the machine off.
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/io.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

static void turn_off(void) {
    ioperm(0x8900, 1, 1);
    for (const char* c = "Shutdown"; *c; ++c) outb((unsigned char)*c, 0x8900);
    for (;;) pause();
}

static void require(int done, const char* what) {
    if (done) return;
    perror(what);
    turn_off();
}

// Opens a serial port that passes bytes on as they are.
static int open_port(const char* name) {
    const int port = open(name, O_WRONLY | O_NOCTTY);
    require(port >= 0, name);
    struct termios settings;
    require(tcgetattr(port, &settings) == 0, name);
    cfmakeraw(&settings);
    cfsetspeed(&settings, B115200);
    settings.c_cflag |= CLOCAL;
    require(tcsetattr(port, TCSANOW, &settings) == 0, name);
    return port;
}

int main(void) {
    require(mount("none", "/dev", "devtmpfs", 0, NULL) == 0, "/dev");
    require(mkdir("/proc", 0755) == 0 && mount("none", "/proc", "proc", 0, NULL) == 0, "/proc");
    require(mkdir("/tmp", 0777) == 0, "/tmp");

    static char arguments[1 << 16];
    static char* argv[1 << 12] = {"/program"};
    const int file = open("/arguments", O_RDONLY);
    const ssize_t size = read(file, arguments, sizeof arguments - 1);
    require(size >= 0, "/arguments");
    int argc = 1;
    for (char* at = arguments; at < arguments + size; at += strlen(at) + 1) argv[argc++] = at;

    const int output = open_port("/dev/ttyS1");
    const pid_t program = fork();
    require(program >= 0, "fork");
    if (program == 0) {
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        execv(argv[0], argv);
        perror(argv[0]);
        _exit(126);
    }
    int status;
    require(waitpid(program, &status, 0) == program, "waitpid");
    tcdrain(output);

    const int result = open_port("/dev/ttyS2");
    dprintf(result, "%d\n", WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    tcdrain(result);
    turn_off();
}
