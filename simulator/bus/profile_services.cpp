#include "simulator/bus/profile_services.h"

#include <algorithm>
#include <map>
#include <utility>

#include "simulator/device/running.h"

namespace tavsim {
namespace {

struct ProfileServices {
    std::map<std::string, Service> replaced;
    std::map<std::string, size_t> turns;  // for services that answer successive calls in turn
};

ProfileServices& services() {
    static ProfileServices& instance = *new ProfileServices;
    return instance;
}

}  // namespace

const Service* profileService(const std::string& uri) {
    for (const auto& known : {&services().replaced, &profile().services}) {
        const auto found = known->find(uri);
        if (found != known->end()) {
            return &found->second;
        }
    }
    return nullptr;
}

void replaceService(const std::string& uri, Service service) {
    services().replaced[uri] = std::move(service);
}

void restoreService(const std::string& uri) {
    services().replaced.erase(uri);
}

Answer serviceAnswer(const Service& service, const std::string& uri, const std::string& payload,
                     bool isSubscription) {
    Answer answer{{}, service.delay, service.every};
    answer.isEndless = service.every > 0 && (service.repeat || service.compute);
    if (service.compute) {
        answer.replies = {service.compute(uri, payload)};
    } else if (isSubscription) {
        answer.replies = service.replies;
    } else if (!service.replies.empty()) {
        const size_t turn = std::min(services().turns[uri]++, service.replies.size() - 1);
        answer.replies = {service.replies[turn]};
    }
    return answer;
}

void clearProfileServices() {
    services() = {};
}

}  // namespace tavsim
