#include "simulator/device/state.h"

#include "simulator/device/journal.h"

namespace tavsim {
namespace {

std::map<std::string, std::string>& state() {
    static auto& instance = *new std::map<std::string, std::string>;
    return instance;
}

}  // namespace

void setState(const std::string& name, const std::string& value) {
    state()[name] = value;
    JournalEntry("device", name.c_str()).outcome(value);
}

const std::map<std::string, std::string>& deviceState() {
    return state();
}

void clearState() {
    state().clear();
}

}  // namespace tavsim
