#include "simulator/bus/profile_services.h"

#include <algorithm>
#include <map>
#include <random>
#include <utility>

#include "base/json/text.h"
#include "simulator/bus/payload.h"
#include "simulator/device/running.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

// The progress of a service.
struct Course {
    explicit Course(int seed) : generator(static_cast<unsigned>(seed)) {}

    std::map<size_t, size_t> turns;  // of each case, the reply of the next single call
    int64_t sent = 0;
    std::mt19937 generator;
};

struct ProfileServices {
    std::map<std::string, Service> replaced;
    std::map<std::string, Milliseconds> delays;  // in place of the services' own
    std::map<std::string, Course> courses;       // by URI
};

ProfileServices& services() {
    static ProfileServices& instance = *new ProfileServices;
    return instance;
}

Course& courseOf(const Service& service, const std::string& uri) {
    return services().courses.try_emplace(uri, service.seed).first->second;
}

// The number of the case that answers, counted from 1; 0: the service itself.
size_t chooseCase(const Service& service, const std::string& payload) {
    if (service.cases.empty()) {
        return 0;
    }
    const Payload request(payload);
    const auto fits = [&](const Service& one) { return request.matches(one.when); };
    const auto found = std::find_if(service.cases.begin(), service.cases.end(), fits);
    return found != service.cases.end() ? static_cast<size_t>(found - service.cases.begin()) + 1
                                        : 0;
}

int drawDelay(const Service& answering, Course& course) {
    const auto choices = static_cast<unsigned>(answering.spread) + 1;
    return answering.delay + (choices > 1 ? static_cast<int>(course.generator() % choices) : 0);
}

Insertion inserted(const dom::element& value) {
    return {simdjson::minify(value), base::textOf(value)};
}

Insertion inserted(int64_t number) {
    return {std::to_string(number), std::to_string(number)};
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

void delayService(const std::string& uri, Milliseconds delay) {
    services().delays[uri] = delay;
}

std::optional<Milliseconds> changedDelay(const std::string& uri) {
    const auto found = services().delays.find(uri);
    return found != services().delays.end() ? std::optional(found->second) : std::nullopt;
}

void restoreService(const std::string& uri) {
    services().replaced.erase(uri);
    services().delays.erase(uri);
}

bool isChanged(const std::string& uri) {
    return services().replaced.contains(uri) || services().delays.contains(uri);
}

std::set<std::string> profileServiceUris() {
    std::set<std::string> uris;
    for (const auto& known : {&services().replaced, &profile().services}) {
        for (const auto& [uri, service] : *known) {
            uris.insert(uri);
        }
    }
    for (const auto& [uri, delay] : services().delays) {
        uris.insert(uri);
    }
    return uris;
}

Answer serviceAnswer(const Service& service, const std::string& uri, const std::string& payload,
                     bool isSubscription) {
    const size_t number = chooseCase(service, payload);
    const Service& answering = number > 0 ? service.cases[number - 1] : service;
    Course& course = courseOf(service, uri);
    Answer answer{{}, drawDelay(answering, course), answering.every};
    answer.isEndless = answering.every > 0 && (answering.repeat || answering.compute);
    answer.isFilled = !answering.compute;
    if (answering.compute) {
        answer.replies = {answering.compute(uri, payload)};
    } else if (isSubscription) {
        answer.replies = answering.replies;
    } else if (!answering.replies.empty()) {
        const size_t turn = std::min(course.turns[number]++, answering.replies.size() - 1);
        answer.replies = {answering.replies[turn]};
    }
    return answer;
}

Reply filledReply(const Reply& reply, const std::string& uri, const std::string& payload) {
    const auto course = services().courses.find(uri);
    const int64_t count = course != services().courses.end() ? ++course->second.sent : 0;
    if (!reply) {
        return reply;
    }
    std::optional<Payload> request;
    return fillTemplate(*reply, [&](std::string_view name) {
        if (!request) {
            request.emplace(payload);
        }
        if (const std::optional<dom::element> member = request->member(name)) {
            return inserted(*member);
        }
        return name == "now" ? inserted(now()) : name == "count" ? inserted(count) : Insertion();
    });
}

void clearProfileServices() {
    services() = {};
}

}  // namespace tavsim
