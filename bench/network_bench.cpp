// The addresses of the loopback interface, compared with the bare socket and ioctl calls.
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "bench/bench_device.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kInterface[] = "lo";

Uint32 addressIn(const ifreq& interface) {
    sockaddr_in address;
    std::memcpy(&address, &interface.ifr_addr, sizeof address);
    return address.sin_addr.s_addr;
}

int readAddresses(TAV_NetInfo* info) {
    ifreq interface = {};
    std::memcpy(interface.ifr_name, kInterface, sizeof kInterface);
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    int failures = ioctl(descriptor, SIOCGIFADDR, &interface);
    info->address = addressIn(interface);
    failures |= ioctl(descriptor, SIOCGIFNETMASK, &interface);
    info->netmask = addressIn(interface);
    failures |= ioctl(descriptor, SIOCGIFBRDADDR, &interface);
    info->broadcast = addressIn(interface);
    close(descriptor);
    return failures;
}

template <typename Query>
void readNetwork(benchmark::State& state, Query query) {
    const BenchDevice device(state);
    TAV_NetInfo info = {};
    int result = -1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(result = query(&info));
    }
    expect(state, result == 0 && info.address == htonl(INADDR_LOOPBACK), "no addresses");
}

void netInfoLibtav(benchmark::State& state) {
    readNetwork(state, [](TAV_NetInfo* info) { return TAV_GetNetInfo(kInterface, info); });
}
BENCHMARK(netInfoLibtav);

void netInfoKernel(benchmark::State& state) {
    readNetwork(state, readAddresses);
}
BENCHMARK(netInfoKernel);

}  // namespace
