#include "simulator/bus/service_program.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "base/child.h"
#include "base/json/writer.h"
#include "base/print_line.h"
#include "simulator/bus/bus.h"
#include "simulator/device/service_reader.h"
#include "simulator/process/child_process.h"
#include "simulator/process/line_socket.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::chrono::seconds kLongestAnswer(5);
constexpr std::chrono::seconds kLongestEnd(1);
constexpr milliseconds kBetweenLooks(10);  // between two checks whether it has ended
constexpr size_t kLongestLine = 1 << 20;
constexpr size_t kMostUnread = 16 << 20;
constexpr int kMostQueued = 10000;

constexpr char kHasEnded[] = "the service's program has ended";

// One program. It is kept as long as the device runs, even when its process has ended: a second
// process would not know the requests of the first one.
class ServiceProgram : public std::enable_shared_from_this<ServiceProgram> {
public:
    explicit ServiceProgram(ServiceCommand command) : m_command(std::move(command)) {}

    void ask(int token, const ServiceRequest& request) {
        if (request.wantsReply) {
            m_requests[token] = {request};
        }
        if (start()) {
            send(token, 1, request);
        } else {
            reply(token, errorReply(-1, kHasEnded), 0);
        }
    }

    void forget(int token) {
        if (m_requests.erase(token) != 0 && isAlive()) {
            m_socket->queue(cancelLine(token));
            m_socket->sendNow();
        }
    }

    void serve() {
        if (isAlive()) {
            m_socket->sendNow();
            m_socket->receiveNow(m_process.hasEnded());
            takeLines();
        }
    }

    void end() {
        if (isAlive()) {
            m_socket->endSending();
            m_process.end(kLongestEnd);
        }
        m_socket.reset();
    }

private:
    struct Request {
        ServiceRequest content;
        int turn = 1;
        int onTheirWay = 0;  // replies
    };

    bool start() {
        if (m_hasStarted) {
            return isAlive();
        }
        m_hasStarted = true;
        base::Descriptor output;
        const int socket = m_process.startProgram(m_command.words, m_command.folder, &output);
        if (socket < 0) {
            base::printLine(stderr, name() + ": cannot be run: " + std::strerror(errno));
            return false;
        }
        m_socket.emplace(base::Descriptor(socket), std::move(output));
        return true;
    }

    bool isAlive() const { return m_socket && m_process.isOurs(); }

    void send(int token, int turn, const ServiceRequest& request) {
        m_lastToken = std::max(m_lastToken, token);
        m_socket->queue(requestLine(token, turn, request));
        m_socket->sendNow();
        if (isTimeVirtual()) {
            awaitAnswer(token);
        }
    }

    void askAgain(int token) {
        const auto found = m_requests.find(token);
        if (found != m_requests.end() && isAlive()) {
            const ServiceRequest request = found->second.content;
            send(token, ++found->second.turn, request);
        }
    }

    // Virtual time stands still during the wait, so that each run is the same.
    void awaitAnswer(int token) {
        m_awaited = token;
        const SteadyClock::time_point limit = SteadyClock::now() + kLongestAnswer;
        while (isAlive() && m_awaited != 0) {
            const auto left = std::chrono::ceil<milliseconds>(limit - SteadyClock::now());
            if (left <= milliseconds(0)) {
                endWith("it did not answer within 5 seconds");
                return;
            }
            m_socket->wait(std::min(left, kBetweenLooks));
            serve();
        }
    }

    void takeLines() {
        while (isAlive()) {
            const std::optional<std::string> line = m_socket->takeLine();
            if (!line) {
                break;
            }
            std::string error;
            const std::optional<ProgramLine> content = readProgramLine(*line, &error);
            content ? handle(*content) : endWith(error);
        }
        if (!isAlive()) {
            return;
        }
        if (m_socket->receivedWithoutEnd() > kLongestLine) {
            endWith("its output: a line of more than 1 MiB");
        } else if (m_socket->queued() > kMostUnread) {
            endWith("it does not read its requests");
        } else if (m_socket->isGone()) {
            endWith(whyGone());
        }
    }

    std::string whyGone() {
        if (!m_socket->isOurs()) {
            return "the application closed its connection to it";
        }
        return m_process.waitForEnd(kLongestEnd) ? "it ended" + m_process.end()
                                                 : "it closed its standard input or output";
    }

    void handle(const ProgramLine& line) {
        if (line.id > m_lastToken) {
            endWith("its output: id: there is no request " + std::to_string(line.id));
            return;
        }
        if (line.id == m_awaited && !line.more) {
            m_awaited = 0;
        }
        if (!m_requests.contains(line.id)) {
            return;
        }
        if (line.reply) {
            reply(line.id, *line.reply, line.delay);
        }
        if (line.again > 0) {
            queue(line.again, [token = line.id](ServiceProgram& self) { self.askAgain(token); });
        }
        if (m_queued > kMostQueued) {
            endWith("it has more than 10000 replies on their way");
        }
    }

    void reply(int token, const Reply& reply, int delay) {
        const auto found = m_requests.find(token);
        if (found != m_requests.end()) {
            ++found->second.onTheirWay;
            queue(delay, [token, reply](ServiceProgram& self) { self.deliver(token, reply); });
        }
    }

    void deliver(int token, const Reply& reply) {
        const auto found = m_requests.find(token);
        if (found == m_requests.end()) {
            return;
        }
        --found->second.onTheirWay;
        if (!found->second.content.isSubscription) {
            m_requests.erase(found);
        }
        deliverReply(token, reply);
    }

    void queue(int delay, const std::function<void(ServiceProgram&)>& action) {
        ++m_queued;
        schedule(after(now(), delay), "service", [weak = weak_from_this(), action] {
            if (const std::shared_ptr<ServiceProgram> self = weak.lock()) {
                --self->m_queued;
                action(*self);
            }
        });
    }

    // A call with a pending reply counts as answered.
    void endWith(const std::string& reason) {
        base::printLine(stderr, name() + ": stopped: " + reason);
        m_process.end();  // first, or it would report a broken pipe
        m_socket.reset();
        m_awaited = 0;
        for (const auto& [token, request] : m_requests) {
            if (request.content.isSubscription || request.onTheirWay == 0) {
                reply(token, errorReply(-1, kHasEnded), 0);
            }
        }
    }

    std::string name() const { return base::escapedJson(base::joined(m_command.words)); }

    const ServiceCommand m_command;
    ChildProcess m_process;
    std::optional<LineSocket> m_socket;
    bool m_hasStarted = false;
    std::map<int, Request> m_requests;  // that can have replies, by token
    int m_lastToken = 0;
    int m_awaited = 0;  // token of the request whose answer the device waits for
    int m_queued = 0;   // answers of the program that are not due yet
};

using Programs = std::map<ServiceCommand, std::shared_ptr<ServiceProgram>>;

Programs& programs() {
    // Never destroyed, because the device ends the programs after static objects are destroyed.
    static Programs& instance = *new Programs;
    return instance;
}

}  // namespace

void askServiceProgram(const ServiceCommand& command, int token, const ServiceRequest& request) {
    std::shared_ptr<ServiceProgram>& program = programs()[command];
    if (program == nullptr) {
        program = std::make_shared<ServiceProgram>(command);
    }
    program->ask(token, request);
}

void forgetServiceRequest(int token) {
    for (const auto& [command, program] : programs()) {
        program->forget(token);
    }
}

void serveServicePrograms() {
    for (const auto& [command, program] : programs()) {
        program->serve();
    }
}

void endServicePrograms() {
    for (const auto& [command, program] : programs()) {
        program->end();
    }
    programs().clear();
}

}  // namespace tavsim
