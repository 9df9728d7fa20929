/* A host of its own in plain C, for systems on which minihost does not run: it loads the bundle that it is
 * given, knows blocks and nothing else, and holds what some members of each kind do against loops over bytes
 * and the functions of this system's C library. */
#include <dlfcn.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef void (*Function)(void);

struct Block {
    void* data;
    int32_t size;
};

/* The registered records, as far as they are read here. */
struct Class {
    int32_t version;
    const char *name, *super;
    int32_t instance_size, system_word;
    Function constructor, destructor;
    const void* properties;
    int32_t property_count;
    const char* methods;
    int32_t method_count;
};
struct Method {
    Function function, setter;
    const char* declaration;
    uint32_t flags;
};

static const struct Class* extension;
static int classes, methods;

static void* data_of(struct Block* block) { return block->data; }
static int32_t size_of(struct Block* block) { return block->size; }
static void register_extension(const struct Class* record) { extension = record; }
static void register_class(const void* record) { classes += record != NULL; }
static void register_method(const void* record) { methods += record != NULL; }

static const struct {
    const char* key;
    Function function;
} kOperations[] = {
    {"PluginRegisterClassExtension", (Function)register_extension},
    {"PluginRegisterClass", (Function)register_class},
    {"PluginRegisterMethod", (Function)register_method},
    {"memoryBlockGetPtr", (Function)data_of},
    {"memoryBlockGetSize", (Function)size_of},
};

static void* resolve(const char* key) {
    for (size_t i = 0; i < sizeof kOperations / sizeof *kOperations; ++i)
        if (strcmp(kOperations[i].key, key) == 0) return (void*)kOperations[i].function;
    return NULL;
}

static void fail(const char* what) {
    fprintf(stderr, "%s\n", what);
    exit(1);
}

/* This host says no version, so the records have the older layout. */
static Function member(const char* name) {
    const size_t length = strlen(name);
    for (int32_t i = 0; i < extension->method_count; ++i) {
        const struct Method* method = (const void*)(extension->methods + (size_t)i * sizeof(struct Method));
        if (strncmp(method->declaration, name, length) == 0 && method->declaration[length] == '(')
            return method->function;
    }
    fail(name);
    return NULL;
}

enum { kBytes = 4096, kPairs = kBytes / 8 };
static uint8_t bytes[kBytes], before[kBytes];
static struct Block block = {bytes, kBytes}, source = {before, kBytes};

static void fill_in(void) {
    uint32_t number = 1;
    for (size_t i = 0; i < kBytes; ++i)
        bytes[i] = before[i] = (uint8_t)((number = number * 1664525 + 1013904223) >> 24);
}

static void check_bytes(void) {
    fill_in();
    ((void (*)(void*, int32_t, int32_t))member("MirrorBytesZOR"))(&block, 3, 4001);
    for (size_t i = 0; i < kBytes; ++i)
        if (bytes[i] != before[i < 3 || i >= 4004 ? i : 4006 - i]) fail("MirrorBytesZOR: wrong bytes");

    ((void (*)(void*, int32_t, int32_t, int32_t))member("FillBytesZOR"))(&block, 1, 4000, 7);
    bytes[3500] = 8;
    const int32_t found =
        ((int32_t(*)(void*, int32_t, int32_t, int32_t))member("FindByteZOR"))(&block, 1, 4000, 8);
    if (found != 3500) fail("FindByteZOR: wrong place");
    if (((int32_t(*)(void*, int32_t, int32_t, int32_t))member("FindByteZOR"))(&block, -1, 4000, 8) != -1)
        fail("FindByteZOR: finds at a negative offset");
}

static int same(float found, float expected) {
    return memcmp(&found, &expected, sizeof found) == 0 || (isnan(found) && isnan(expected));
}

static void check_pairs(const char* name, float (*first)(float, float), float (*second)(float, float)) {
    ((void (*)(void*, int32_t, int32_t, void*))member(name))(&block, 0, kPairs, &source);
    for (size_t i = 0; i < kPairs; ++i) {
        float in[2], out[2];
        memcpy(in, before + 8 * i, sizeof in);
        memcpy(out, bytes + 8 * i, sizeof out);
        if (!same(out[0], first(in[0], in[1])) || !same(out[1], second(in[0], in[1]))) {
            fprintf(stderr, "pair %d, %a and %a: %a and %a\n", (int)i, in[0], in[1], out[0], out[1]);
            fail(name);
        }
    }
}

static float x_of(float magnitude, float angle) { return cosf(angle) * magnitude; }
static float y_of(float magnitude, float angle) { return magnitude * sinf(angle); }
static float magnitude_of(float x, float y) { return sqrtf(y * y + x * x); }
static float angle_of(float x, float y) { return atan2f(y, x); }

static void check_sweep(void) {
    const double turn = 6.28318530718, seconds = kPairs;
    ((void (*)(void*, int32_t, int32_t, int32_t, int32_t, double))member("_CalcLogSweepTableZOR"))(
        &block, 0, kPairs, 20, 20000, seconds);
    const double ratio = log(20000.0 / 20.0), scale = 20 * turn / ratio;
    for (size_t i = 0; i < kPairs; ++i) {
        const double position = (double)i / seconds;
        const float growth = expf((float)(ratio * position));
        const float phase = (float)((double)(growth - 1.0F) * scale);
        float out[2];
        memcpy(out, bytes + 8 * i, sizeof out);
        if (!same(out[0], sinf(phase) * 0.944F) || !same(out[1], (float)(position * (16 * turn))))
            fail("_CalcLogSweepTableZOR: wrong floats");
    }
}

int main(int arguments, char** argument) {
    if (arguments != 2) fail("usage: host BUNDLE");
    void* bundle = dlopen(argument[1], RTLD_NOW | RTLD_LOCAL);
    if (!bundle) fail(dlerror());
    void (*start)(void* (*)(const char*)) = (void (*)(void* (*)(const char*)))dlsym(bundle, "REALPluginMain");
    if (!start) fail("no entry point");
    start(resolve);
    if (!extension || classes != 1 || methods != 1) fail("not everything was registered");
    check_bytes();
    fill_in();
    check_pairs("_ConvertPolarToCartesian", x_of, y_of);
    check_pairs("_ConvertCartesianToPolar", magnitude_of, angle_of);
    check_sweep();
    return 0;
}
