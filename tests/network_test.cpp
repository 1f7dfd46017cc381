#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

#include "device_test.h"
#include "resources.h"

namespace {

using tavtest::openDescriptors;
using testing::ElementsAre;

// What the kernel is to answer about any interface, and what it was asked.
struct Kernel {
    Uint32 address = 0x0102a8c0;
    Uint32 netmask = 0x00ffffff;
    Uint32 broadcast = 0xff02a8c0;
    unsigned long refused = 0;
    std::string name;  // as the last request had it, in full
    std::vector<unsigned long> requests;

    int ask(unsigned long request, ifreq* interface) {
        requests.push_back(request);
        name.assign(interface->ifr_name, sizeof interface->ifr_name);
        if (request == refused) {
            return -1;
        }
        sockaddr_in answer = {};
        answer.sin_family = AF_INET;
        answer.sin_addr.s_addr = request == SIOCGIFADDR      ? address
                                 : request == SIOCGIFNETMASK ? netmask
                                                             : broadcast;
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

    void expectFailedWith(const TAV_NetInfo& expected) {
        const long descriptors = openDescriptors();
        TAV_NetInfo info = {1, 1, 1};
        EXPECT_EQ(TAV_GetNetInfo("eth0", &info), TAV_ENETWORK);
        expectFailure("TAV_GetNetInfo", "Could not access network information");
        EXPECT_EQ(info.address, expected.address);
        EXPECT_EQ(info.netmask, expected.netmask);
        EXPECT_EQ(info.broadcast, expected.broadcast);
        EXPECT_EQ(openDescriptors(), descriptors);
    }

    Kernel kernel;
};

TEST_F(NetworkTest, AnInterfaceOfAnyNameHasThreeAddresses) {
    const long descriptors = openDescriptors();
    for (const std::size_t length : {1, 15, 16, 17, 300}) {
        std::string name(length, 'n');
        TAV_NetInfo info = {};
        EXPECT_EQ(TAVNet_Get_Info(name.c_str(), &info), TAV_NOERROR);
        EXPECT_EQ(info.address, kernel.address);
        EXPECT_EQ(info.netmask, kernel.netmask);
        EXPECT_EQ(info.broadcast, kernel.broadcast);
        name.resize(IFNAMSIZ);
        EXPECT_EQ(kernel.name, name);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(NetworkTest, StopsAtTheFirstRefusalAndKeepsWhatItHas) {
    kernel.refused = SIOCGIFBRDADDR;
    expectFailedWith({kernel.address, kernel.netmask, 0});
    kernel.refused = SIOCGIFNETMASK;
    expectFailedWith({kernel.address, 0, 0});
    kernel.refused = SIOCGIFADDR;
    expectFailedWith({0, 0, 0});
    EXPECT_THAT(kernel.requests, ElementsAre(SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFBRDADDR,
                                             SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFADDR));
}

TEST_F(NetworkTest, AnInterfaceWithoutAnAddressFails) {
    kernel.address = 0;
    expectFailedWith({0, 0, 0});
    EXPECT_THAT(kernel.requests, ElementsAre(SIOCGIFADDR));
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

TEST_F(NetworkTest, TheRealKernelKnowsNoSuchInterface) {
    g_kernel = nullptr;
    TAV_NetInfo info;
    EXPECT_EQ(TAV_GetNetInfo("no-such-if", &info), TAV_ENETWORK);
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
    EXPECT_TRUE(kernel.requests.empty());
}

}  // namespace
