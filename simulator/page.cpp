#include "simulator/page.h"
#include "platform/napp.h"
namespace sim {
void startPage(const std::string&) {
}
void stopPage() {
}
}  // namespace sim
bool NApp_RegisterKiteHandlers(NApp_MethodListCallback, NApp_MethodCallback) {
    return false;
}
bool NApp_JSCall(const char*, const char* const*, int) {
    return false;
}
