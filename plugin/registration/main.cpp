// The entry point: settles the version of the host's records and registers everything.
#include <cstdlib>
#include <cstring>

#include "generated/version.h"
#include "kernels/levels.h"
#include "largeblock/memoryblockzor.h"
#include "plugin/host.h"
#include "plugin/registration/convert.h"
#include "plugin/registration/tables.h"

namespace {

// For whoever looks into the file.
constexpr char kIdentity[] = MEMORYBLOCKZOR_IDENTITY;

constexpr int32_t kInstanceDataAlignment = 16;  // bytes

int32_t version_word(double hostVersion) {
    if (hostVersion >= 2013.03) return kNewestLayout;
    if (hostVersion >= 2013.0) return 11;
    if (hostVersion >= 2012.0) return 10;
    return kOldestLayout;
}

// Gives the record the version word and its layout. A record that already has the older layout keeps both.
bool adapt(REALclassDefinition& definition) {
    if (definition.version == kOldestLayout) return true;
    if (CurrentREALControlVersion > kOldestLayout) {
        definition.version = CurrentREALControlVersion;
        return true;
    }
    void* older = FixClass(&definition);
    if (!older) return false;
    std::memcpy(&definition, older, kOlderClassSize);
    std::free(older);
    return true;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(Resolver resolver) {
    __asm__ volatile("" : : "r"(kIdentity));  // keeps it
    gResolver = resolver;
    kernels::choose_level(kernels::best_level());
    const auto registerVersion = REALRegisterPluginVersion.ask();
    if (const auto hostVersion = REALGetRBVersion.ask()) rbversion_rbversion = hostVersion();
    CurrentREALControlVersion = version_word(rbversion_rbversion);
    if (registerVersion) registerVersion(CurrentREALControlVersion);

    if (adapt(memBlkClass)) REALRegisterClassExtension(&memBlkClass);
    MemClass.instanceDataSize = (MemClass.instanceDataSize + kInstanceDataAlignment - 1) /
                                kInstanceDataAlignment * kInstanceDataAlignment;
    if (adapt(MemClass)) REALRegisterClass(&MemClass);
    REALRegisterMethod(&globalsMethods);
}
