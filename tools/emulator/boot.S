// The emulated machine's memory at the start, kernel and all, and the ROM that jumps into it. No BIOS and
// no boot loader run: the kernel is entered where a hypervisor would (PVH), in 32 bits, with a structure that
// describes the machine.

    .section .ram, "awx"
    .incbin KERNEL                  // linked at 16 MiB, where the kernel wants to be
    .balign 4096
start_info:
    .long 0x336ec578, 1, 0, 1       // magic, version, flags, number of modules
    .quad modules, command_line, 0, memory_map
    .long 1, 0
modules:
    .quad initramfs, initramfs_end - initramfs, 0, 0
memory_map:
    .quad 0, MEMORY
    .long 1, 0                      // usable
command_line:
    .asciz COMMAND_LINE
    .balign 4096
initramfs:
    .incbin INITRAMFS
initramfs_end:

    .section .rom, "ax"
    .code16
start:
    lgdtl %cs:descriptors - start
    mov %cr0, %eax
    or $1, %eax
    mov %eax, %cr0
    ljmpl $8, $in_32_bits
    .code32
in_32_bits:
    mov $16, %eax
    mov %eax, %ds
    mov %eax, %es
    mov %eax, %ss
    // The emulator reads the image in one piece, but hands out its memory block by block as blocks are first
    // used: using all of the image in order gives each of its blocks the memory that it was read to.
    mov $0x1000000, %edi
0:  mov (%edi), %eax
    add $4096, %edi
    cmp $initramfs_end, %edi
    jb 0b
    mov $start_info, %ebx
    mov $ENTRY, %eax
    jmp *%eax

    .balign 8
segments:
    .quad 0, 0x00cf9b000000ffff, 0x00cf93000000ffff
descriptors:
    .word . - segments - 1
    .long segments

    .org 0xfff0                     // where the processor starts
    .code16
    jmp start
    .org 0x10000
