#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <map>

#include "device_test.h"
#include "resources.h"

namespace {

using tavtest::openDescriptors;
using testing::ElementsAre;

constexpr Uint32 kAddress = 0x0102a8c0;
constexpr Uint32 kNetmask = 0x00ffffff;
constexpr Uint32 kBroadcast = 0xff02a8c0;

// What the kernel is to answer about any interface, and what it was asked.
struct Kernel {
    std::map<unsigned long, Uint32> answers = {
        {SIOCGIFADDR, kAddress}, {SIOCGIFNETMASK, kNetmask}, {SIOCGIFBRDADDR, kBroadcast}};
    std::string name;  // as the last request had it, in full
    std::vector<unsigned long> requests;

    int ask(unsigned long request, ifreq* interface) {
        requests.push_back(request);
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

class NetworkTest : public tavtest::DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        g_kernel = &kernel;
    }

    void TearDown() override {
        g_kernel = nullptr;
        DeviceTest::TearDown();
    }

    void expectInfo(const char* interface, int code, const TAV_NetInfo& expected) {
        const long descriptors = openDescriptors();
        TAV_NetInfo info = {1, 1, 1};
        EXPECT_EQ(TAV_GetNetInfo(interface, &info), code);
        EXPECT_EQ(info.address, expected.address);
        EXPECT_EQ(info.netmask, expected.netmask);
        EXPECT_EQ(info.broadcast, expected.broadcast);
        EXPECT_EQ(openDescriptors(), descriptors);
    }

    Kernel kernel;
};

TEST_F(NetworkTest, AnInterfaceOfAnyNameHasThreeAddresses) {
    for (const std::size_t length : {1, 15, 16, 17, 300}) {
        std::string name(length, 'n');
        kernel.requests.clear();
        expectInfo(name.c_str(), TAV_NOERROR, {kAddress, kNetmask, kBroadcast});
        EXPECT_THAT(kernel.requests, ElementsAre(SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFBRDADDR));
        name.resize(IFNAMSIZ);
        EXPECT_EQ(kernel.name, name);
    }
}

TEST_F(NetworkTest, StopsAtTheFirstRefusalAndKeepsWhatItHas) {
    const struct {
        std::map<unsigned long, Uint32> answers;
        TAV_NetInfo info;
        std::size_t requests;
    } rows[] = {
        {{{SIOCGIFADDR, kAddress}, {SIOCGIFNETMASK, kNetmask}}, {kAddress, kNetmask, 0}, 3},
        {{{SIOCGIFADDR, kAddress}}, {kAddress, 0, 0}, 2},
        {{}, {0, 0, 0}, 1},
        {{{SIOCGIFADDR, 0}}, {0, 0, 0}, 1},  // an interface without an address
    };
    for (const auto& row : rows) {
        kernel.answers = row.answers;
        kernel.requests.clear();
        expectInfo("eth0", TAV_ENETWORK, row.info);
        expectFailure("TAV_GetNetInfo", "Could not access network information");
        EXPECT_EQ(kernel.requests.size(), row.requests);
    }
}

TEST_F(NetworkTest, WithoutASocketTheKernelIsNotAsked) {
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    TAV_NetInfo info = {1, 1, 1};
    EXPECT_EQ(TAV_GetNetInfo("eth0", &info), TAV_ENETWORK);
    setrlimit(RLIMIT_NOFILE, &limit);
    expectFailure("TAV_GetNetInfo", "Could not access network information");
    EXPECT_TRUE(kernel.requests.empty());
    EXPECT_EQ(info.address, 0U);
}

TEST_F(NetworkTest, ArgumentsAreCheckedInOrder) {
    EXPECT_EQ(TAVNet_Get_Info(nullptr, nullptr), TAV_INVALIDINPUT);
    EXPECT_STREQ(SDL_GetError(), "interface name is NULL");
    EXPECT_THAT(trace(), ElementsAre("tav_f TAVNet_Get_Info (null), (nil)",
                                     "tav_f TAV_GetNetInfo (null), (nil)",
                                     "tav_e TAV_GetNetInfo interface name is NULL"));
    EXPECT_EQ(TAV_GetNetInfo("", nullptr), TAV_INVALIDINPUT);
    expectFailure("TAV_GetNetInfo", "interface name is empty");
    EXPECT_EQ(TAV_GetNetInfo("eth0", nullptr), TAV_INVALIDINPUT);
    expectFailure("TAV_GetNetInfo", "interface info is NULL");
}

}  // namespace
