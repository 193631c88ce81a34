#include "platform/Services.h"

namespace jk::platform {
namespace {
Services g_services;
}
Services& services() { return g_services; }
void install(const Services& s) { g_services = s; }
}  // namespace jk::platform
