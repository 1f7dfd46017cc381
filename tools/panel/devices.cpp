#include "devices.h"

#include <filesystem>
#include <utility>

#include "base/json/writer.h"
#include "simulator/control/running_devices.h"
#include "simulator/device/claim.h"
#include "simulator/device/trusted_folder.h"

namespace fs = std::filesystem;

namespace panel {
namespace {

constexpr guint kBetweenLooks = 1000;  // milliseconds

// Connections that only find out whether a device listens would fill the queue of one that is busy.
bool isRunning(const std::string& root) {
    std::error_code problem;
    return fs::exists(root + tavsim::kControlSocket, problem) &&
           tavsim::isClaimed(root, tavsim::kDeviceClaim);
}

}  // namespace

Devices::Devices(std::string only, std::function<void()> onChange)
    : m_only(std::move(only)), m_onChange(std::move(onChange)) {
    look();
    m_looks.every(kBetweenLooks, [this] { look(); });
}

bool Devices::has(const std::string& root) const {
    return root == m_only || m_roots.contains(root);
}

void Devices::look() {
    std::set<std::string> roots;
    base::JsonWriter json;
    json.beginObject().key("devices").beginArray();
    for (const tavsim::RunningDevice& device : tavsim::runningDevices(isRunning)) {
        std::error_code problem;
        if (m_only.empty() || fs::equivalent(device.root, m_only, problem)) {
            const std::string& root = m_only.empty() ? device.root : m_only;
            json.beginObject().members("root", root, "device", device.device);
            json.members("program", device.program, "process", device.process).endObject();
            roots.insert(root);
        }
    }
    std::string list = json.endArray().endObject().take();
    if (list == m_message) {
        return;
    }
    m_message = std::move(list);
    m_roots = std::move(roots);
    m_onChange();
}

}  // namespace panel
