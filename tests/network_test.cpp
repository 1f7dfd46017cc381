#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <map>

#include "resources.h"
#include "transcript.h"

namespace {

using tavtest::openDescriptors;

constexpr Uint32 kAddress = 0x0102a8c0;
constexpr Uint32 kNetmask = 0x00ffffff;
constexpr Uint32 kBroadcast = 0xff02a8c0;

// What the kernel is to answer about any interface, and what it was asked.
struct Kernel {
    std::map<unsigned long, Uint32> answers = {
        {SIOCGIFADDR, kAddress}, {SIOCGIFNETMASK, kNetmask}, {SIOCGIFBRDADDR, kBroadcast}};
    std::string name;  // as the last request had it, in full
    int requests = 0;

    int ask(unsigned long request, ifreq* interface) {
        ++requests;
        name.assign(interface->ifr_name, sizeof interface->ifr_name);
        if (answers.count(request) == 0) {
            return -1;
        }
        sockaddr_in answer = {};
        answer.sin_family = AF_INET;
        answer.sin_addr.s_addr = answers.at(request);
        std::memcpy(&interface->ifr_addr, &answer, sizeof answer);
        return 0;
    }
};

Kernel* g_kernel = nullptr;  // null: the real one

}  // namespace

// Stands in front of the C library's, so that no test depends on this machine's interfaces.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (g_kernel == nullptr) {
        return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
    }
    return g_kernel->ask(request, static_cast<ifreq*>(argument));
}

namespace {

class NetworkTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        g_kernel = &kernel;
    }

    void TearDown() override {
        g_kernel = nullptr;
        TranscriptTest::TearDown();
    }

    // The addresses, how often the kernel was asked, and the name that it last heard.
    std::string query(const std::string& interface) {
        const long descriptors = openDescriptors();
        kernel.requests = 0;
        TAV_NetInfo info = {1, 1, 1};
        std::ostringstream text;
        text << TAV_GetNetInfo(interface.c_str(), &info) << std::hex << ": " << info.address << ' '
             << info.netmask << ' ' << info.broadcast << " of '" << kernel.name.c_str() << "' in "
             << kernel.requests;
        EXPECT_EQ(openDescriptors(), descriptors);
        return text.str();
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
}

TEST_F(NetworkTest, WithoutASocketTheKernelIsNotAsked) {
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    TAV_NetInfo info = {1, 1, 1};
    show("TAV_GetNetInfo without a descriptor", [&] {
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        const int code = TAV_GetNetInfo("eth0", &info);
        setrlimit(RLIMIT_NOFILE, &limit);
        return code;
    });
    CALL(kernel.requests + static_cast<int>(info.address));
}

}  // namespace
