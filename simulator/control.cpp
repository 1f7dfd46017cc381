#include "simulator/control.h"

namespace sim {

bool startControl(std::string*) {
    return true;
}

void serveControl() {
}

void stopControl() {
}

}  // namespace sim
