#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "core/report.h"
#include "tav.h"

namespace {

// The socket is only a handle for requests to the kernel.
class Socket {
public:
    Socket() : m_descriptor(socket(AF_INET, SOCK_STREAM, 0)) {}
    ~Socket() {
        if (isOpen()) {
            close(m_descriptor);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }

    // Requests one address of the interface that the record names.
    bool readAddress(unsigned long request, ifreq* interface, Uint32* address) const {
        if (ioctl(m_descriptor, request, interface) < 0) {
            return false;
        }
        sockaddr_in socketAddress;
        std::memcpy(&socketAddress, &interface->ifr_addr, sizeof socketAddress);
        *address = socketAddress.sin_addr.s_addr;
        return true;
    }

private:
    int m_descriptor;
};

bool readNetInfo(const char* interfaceName, TAV_NetInfo* info) {
    ifreq interface = {};
    std::memcpy(interface.ifr_name, interfaceName,
                strnlen(interfaceName, sizeof interface.ifr_name));
    const Socket socket;
    return socket.isOpen() && socket.readAddress(SIOCGIFADDR, &interface, &info->address) &&
           info->address != 0 && socket.readAddress(SIOCGIFNETMASK, &interface, &info->netmask) &&
           socket.readAddress(SIOCGIFBRDADDR, &interface, &info->broadcast);
}

}  // namespace

int TAV_GetNetInfo(const char* interfaceName, TAV_NetInfo* info) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p", interfaceName, static_cast<void*>(info));
    if (interfaceName == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "interface name is NULL");
    }
    if (*interfaceName == '\0') {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "interface name is empty");
    }
    if (info == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "interface info is NULL");
    }
    *info = {};
    if (!readNetInfo(interfaceName, info)) {
        return TAV_FAIL(__func__, TAV_ENETWORK, "Could not access network information");
    }
    return TAV_NOERROR;
}

int TAVNet_Get_Info(const char* interfaceName, TAV_NetInfo* info) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p", interfaceName, static_cast<void*>(info));
    return TAV_GetNetInfo(interfaceName, info);
}
