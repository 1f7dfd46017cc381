#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <map>

#include "transcript.h"

namespace {

// A fake kernel: its answers about any interface, and what it was asked.
struct Kernel {
    std::map<unsigned long, Uint32> answers = {
        {SIOCGIFADDR, 0x0102a8c0}, {SIOCGIFNETMASK, 0x00ffffff}, {SIOCGIFBRDADDR, 0xff02a8c0}};
    std::string name;  // of the last request, all bytes
    int requests = 0;
};

Kernel* g_kernel = nullptr;  // null: the real one

}  // namespace

// Interposed before the C library's function, so that no test depends on this machine's interfaces.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (g_kernel == nullptr) {
        return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
    }
    ++g_kernel->requests;
    auto* interface = static_cast<ifreq*>(argument);
    g_kernel->name.assign(interface->ifr_name, sizeof interface->ifr_name);
    const auto answer = g_kernel->answers.find(request);
    if (answer == g_kernel->answers.end()) {
        return -1;
    }
    auto* address = reinterpret_cast<sockaddr_in*>(&interface->ifr_addr);
    *address = {};
    address->sin_family = AF_INET;
    address->sin_addr.s_addr = answer->second;
    return 0;
}

namespace {

class NetworkTest : public tavtest::TranscriptTest {
protected:
    NetworkTest() { g_kernel = &kernel; }
    ~NetworkTest() override { g_kernel = nullptr; }

    // The addresses, the name in the last request, and the number of requests.
    std::string query(const std::string& interface) {
        const long descriptors = openDescriptors();
        kernel.requests = 0;
        TAV_NetInfo info = {1, 1, 1};
        const int code = TAV_GetNetInfo(interface.c_str(), &info);
        EXPECT_EQ(openDescriptors(), descriptors);
        return join(code, std::hex, ": ", info.address, ' ', info.netmask, ' ', info.broadcast,
                    " of '", kernel.name.c_str(), "' in ", kernel.requests);
    }

    Kernel kernel;
};

TEST_F(NetworkTest, Addresses) {
    for (const size_t length : {1, 15, 16, 17, 300}) {
        CALL(query(std::string(length, 'n')));
    }
    for (const unsigned long missing : {SIOCGIFBRDADDR, SIOCGIFNETMASK, SIOCGIFADDR}) {
        kernel.answers.erase(missing);
        CALL(query("eth0"));
    }
    kernel.answers = {{SIOCGIFADDR, 0}};  // an interface without an address
    CALL(query("eth0"));
    CALL(TAVNet_Get_Info(nullptr, nullptr));
    CALL(TAV_GetNetInfo("", nullptr));
    CALL(TAV_GetNetInfo("eth0", nullptr));
    // With standard input closed, the socket gets descriptor 0, which is valid.
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    kernel = {};
    CALL(query("eth0"));
    dup2(input, STDIN_FILENO);
    close(input);
    // Without a free descriptor there is no socket, and the kernel is not asked.
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    kernel.requests = 0;
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    TAV_NetInfo info = {1, 1, 1};
    CALL(TAV_GetNetInfo("eth0", &info));
    setrlimit(RLIMIT_NOFILE, &limit);
    CALL(kernel.requests + static_cast<int>(info.address));
}

}  // namespace
