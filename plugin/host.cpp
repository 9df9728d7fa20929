#include "plugin/host.h"

constinit Resolver gResolver = nullptr;
constinit double rbversion_rbversion = 0.0;
constinit int32_t CurrentREALControlVersion = kNewestLayout;
