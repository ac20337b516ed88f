#include "CwbMain.h"

#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <chrono>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CwbRequest.h"
#include "RectSyntax.h"
#include "ReplyPrinter.h"
#include "StatusListener.h"

namespace cwbtool {

namespace {

using ::aidl::vendor::zarel::hardware::cwb::Error;
using ::aidl::vendor::zarel::hardware::cwb::ICwbService;
using Clock = std::chrono::steady_clock;

constexpr int kRan = 0;
constexpr int kNotDone = 1;
constexpr int kBadArguments = 2;

struct Options {
    bool json = false;
    bool wait = false;
    bool help = false;
    bool session = false;  // dump --session
    int64_t watchHz = 0;
    int64_t count = 0;  // 0: not given
    int64_t timeoutMs = 1000;
    std::vector<std::string> words;  // the sub-command and its arguments
};

std::string usage() {
    return "usage: cwb [--json] [--wait] [--watch HZ [--count N]] SUB-COMMAND [ARGS]\n"
           "  Asks the running vendor.zarel.hardware.cwb.ICwbService/default.\n"
           "  --json        one JSON object per line instead of the table\n"
           "  --wait        wait for the service to be registered instead of failing at once\n"
           "  --watch HZ    repeat the request HZ times a second (0.1 to 100 as N or 1/N) and\n"
           "                print an answer only when it changed\n"
           "  --count N     stop --watch after N requests; for registerCallback, wait for N\n"
           "                notifications (default 1)\n"
           "  --timeout MS  how long registerCallback waits for its notifications (default 1000)\n"
           "Sub-commands:\n" +
           CwbRequest::usage() +
           "  dump [--session]   what dumpsys prints; --session: as a cwb-sim session to replay\n" +
           "Exit status: 0 ran, 1 could not be done (e.g. no service), 2 malformed arguments.\n";
}

// HZ as a whole number, or 1/N for slower than once a second; returned in millihertz.
bool parseHz(const std::string& text, int64_t* milliHz) {
    int64_t value = 0;
    if (text.rfind("1/", 0) == 0) {
        if (!parseInt(text.substr(2), 1, 10, &value)) return false;
        *milliHz = 1000 / value;
        return true;
    }
    if (!parseInt(text, 1, 100, &value)) return false;
    *milliHz = value * 1000;
    return true;
}

bool parseOptions(int argc, char** argv, Options* o, std::string* error) {
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        // Negative numbers and "-" are arguments; options start with "--" (or are -h).
        if (a.rfind("--", 0) != 0 && a != "-h") {
            o->words.push_back(a);
            continue;
        }
        auto value = [&](std::string* out) {
            if (i + 1 >= argc) {
                *error = a + " needs a value";
                return false;
            }
            *out = argv[++i];
            return true;
        };
        std::string v;
        if (a == "-h" || a == "--help") {
            o->help = true;
        } else if (a == "--json") {
            o->json = true;
        } else if (a == "--session") {
            o->session = true;
        } else if (a == "--wait") {
            o->wait = true;
        } else if (a == "--watch") {
            if (!value(&v)) return false;
            if (!parseHz(v, &o->watchHz)) {
                *error = "--watch: '" + v + "' is not a rate from 1/10 to 100";
                return false;
            }
        } else if (a == "--count") {
            if (!value(&v)) return false;
            if (!parseInt(v, 1, std::numeric_limits<int32_t>::max(), &o->count)) {
                *error = "--count: '" + v + "' is not a positive integer";
                return false;
            }
        } else if (a == "--timeout") {
            if (!value(&v)) return false;
            if (!parseInt(v, 0, 600000, &o->timeoutMs)) {
                *error = "--timeout: '" + v + "' is not a time from 0 to 600000 ms";
                return false;
            }
        } else {
            *error = "unknown option '" + a + "'";
            return false;
        }
    }
    return true;
}

double since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

int32_t statusCode(const ndk::ScopedAStatus& status) {
    if (status.isOk()) return 0;
    if (status.getExceptionCode() == EX_SERVICE_SPECIFIC) return status.getServiceSpecificError();
    return status.getExceptionCode();
}

Reply errorReply(const std::string& request, const ndk::ScopedAStatus& status, Error result) {
    Reply reply;
    reply.request = request;
    reply.status = statusCode(status);
    if (status.isOk()) reply.error = static_cast<int32_t>(result);
    return reply;
}

// registerCallback prints the notifications that follow; unregisterCallback removes a callback
// of its own again, which is all a separate process can unregister.
int callbacks(ICwbService& service, const Options& o, const std::string& method,
              ReplyPrinter& printer) {
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    const auto start = Clock::now();
    auto listener = ndk::SharedRefBase::make<StatusListener>();
    Error result = Error::NONE;
    ndk::ScopedAStatus status = service.registerCallback(listener, &result);
    printer.print(errorReply("registerCallback", status, result), since(start));
    if (!status.isOk()) return kRan;
    if (method == "registerCallback") {
        const size_t wanted = o.count > 0 ? static_cast<size_t>(o.count) : 1;
        const auto deadline = start + std::chrono::milliseconds(o.timeoutMs);
        size_t shown = 0;
        while (shown < wanted) {
            const std::vector<bool> seen = listener->waitBeyond(shown, deadline);
            if (seen.size() == shown) break;  // the deadline passed
            for (; shown < seen.size() && shown < wanted; ++shown) {
                printer.event(seen[shown], since(start));
            }
        }
    }
    status = service.unregisterCallback(listener, &result);
    printer.print(errorReply("unregisterCallback", status, result), since(start));
    return kRan;
}

}  // namespace

int cwbMain(int argc, char** argv, FILE* out, FILE* err) {
    Options o;
    std::string error;
    if (!parseOptions(argc, argv, &o, &error)) {
        fprintf(err, "cwb: %s (cwb --help shows the usage)\n", error.c_str());
        return kBadArguments;
    }
    if (o.help) {
        fputs(usage().c_str(), out);
        return kRan;
    }
    const bool dump = !o.words.empty() && o.words[0] == "dump";
    if (o.session && !dump) {
        fprintf(err, "cwb: --session is an option of dump\n");
        return kBadArguments;
    }
    CwbRequest request;
    if (dump && o.words.size() > 1) {
        fprintf(err, "cwb: dump takes no argument (cwb --help shows the usage)\n");
        return kBadArguments;
    }
    if (!dump && !request.parse(o.words, &error)) {
        fprintf(err, "cwb: %s (cwb --help shows the usage)\n", error.c_str());
        return kBadArguments;
    }
    const bool callback =
            request.method() == "registerCallback" || request.method() == "unregisterCallback";
    if (callback && o.watchHz != 0) {
        fprintf(err, "cwb: %s cannot be watched\n", request.method().c_str());
        return kBadArguments;
    }
    if (o.count != 0 && o.watchHz == 0 && request.method() != "registerCallback") {
        fprintf(err, "cwb: --count needs --watch\n");
        return kBadArguments;
    }

    const std::string instance = std::string(ICwbService::descriptor) + "/default";
    ndk::SpAIBinder binder(o.wait ? AServiceManager_waitForService(instance.c_str())
                                  : AServiceManager_checkService(instance.c_str()));
    std::shared_ptr<ICwbService> service = ICwbService::fromBinder(binder);
    if (service == nullptr) {
        fprintf(err, "cwb: %s is not running\n", instance.c_str());
        return kNotDone;
    }

    if (dump) {
        const char* args[] = {"--session"};
        fflush(out);
        return AIBinder_dump(binder.get(), fileno(out), args, o.session ? 1 : 0) == STATUS_OK
                       ? kRan
                       : kNotDone;
    }
    ReplyPrinter printer(out, o.json, o.watchHz != 0);
    if (callback) return callbacks(*service, o, request.method(), printer);

    const auto start = Clock::now();
    const auto period = std::chrono::microseconds(o.watchHz != 0 ? 1000000000 / o.watchHz : 0);
    Reply last;
    for (int64_t i = 0; o.watchHz == 0 ? i < 1 : (o.count == 0 || i < o.count); ++i) {
        Reply reply;
        if (!request.run(*service, &reply, &error)) {
            fprintf(err, "cwb: %s\n", error.c_str());
            return kNotDone;
        }
        if (i == 0 || reply != last) printer.print(reply, since(start));
        last = std::move(reply);
        if (o.watchHz != 0 && (o.count == 0 || i + 1 < o.count)) {
            std::this_thread::sleep_until(start + period * (i + 1));
        }
    }
    return kRan;
}

}  // namespace cwbtool
