#include "SessionRunner.h"

#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <android/binder_manager.h>
#include <cutils/properties.h>
#include <host/binder_process.h>
#include <host/binder_registry.h>
#include <host/gralloc_control.h>
#include <host/log_capture.h>
#include <host/properties.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "AnswersPlot.h"
#include "HistogramPlot.h"
#include "PngFile.h"
#include "RectMarks.h"

namespace cwbsim {

namespace {

namespace cwb = aidl::vendor::zarel::hardware::cwb;
using host::device::Frame;
using host::device::FrameKind;
using host::device::PanelId;

constexpr PanelId kPanels[] = {PanelId::Main, PanelId::Secondary};
constexpr FrameKind kKinds[] = {FrameKind::Mixer, FrameKind::PostProcessed};
constexpr const char* kDisplayIdProp = "ro.vendor.zarel.display.cwb.display_id";
constexpr const char* kDisplayIdSecProp = "ro.vendor.zarel.display.cwb.display_id_sec";

const char* panelName(PanelId panel) {
    return panel == PanelId::Main ? "main" : "sec";
}

// A display id property as the service reads it: atoi, -1 when unset.
int32_t displayIdProperty(const char* name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name, value, "-1");
    return atoi(value);
}

// 0 for OK; the service-specific code, or else the exception code, for a failed status.
int32_t statusCode(const ndk::ScopedAStatus& status) {
    if (status.isOk()) return 0;
    if (status.getExceptionCode() == EX_SERVICE_SPECIFIC) return status.getServiceSpecificError();
    return status.getExceptionCode();
}

std::string instanceName() {
    return std::string(cwb::ICwbService::descriptor) + "/default";
}

std::string joined(const int32_t* v, size_t n) {
    std::string out;
    for (size_t i = 0; i < n; ++i) out += (i == 0 ? "" : ",") + std::to_string(v[i]);
    return out.empty() ? "-" : out;
}

std::string fixed(const char* format, double value) {
    char text[64];
    snprintf(text, sizeof(text), format, value);
    return text;
}

// The short answer a snapshot label shows.
std::string shortAnswer(const CallRecord& r) {
    if (r.rgb) return "RGB " + joined(r.rgb->data(), 3);
    if (r.lumas && !r.lumas->empty()) return "LUMA " + fixed("%.4f", (*r.lumas)[0]);
    if (r.histogram) return "HISTOGRAM";
    if (r.values && r.name == "getSharedData") return "CROP";
    if (r.values && r.values->size() >= 3 && r.feature != 2) {
        return "CWB" + std::to_string(r.feature) + " RGB " + joined(r.values->data(), 3);
    }
    if (r.values && !r.values->empty()) return "CWB2 LUMA " + fixed("%.4f", (*r.values)[0] / 1e4);
    return r.name;
}

}  // namespace

SessionRunner::SessionRunner(const Options& options, std::string baseDir, Printer& printer)
    : mOptions(options), mBaseDir(std::move(baseDir)), mPrinter(printer) {
    // Every run starts from a clean process: no properties, services, faults or capture mode
    // left over from an earlier run.
    host::properties::clear();
    host::binder::resetRegistry();
    host::gralloc::reset();
    host::log::clear();
    cwb::implementation::mLightModeID = 2;
    mDevice = std::make_unique<host::device::Device>();
    mRecorder = std::make_unique<SnapshotRecorder>(mDevice->displayConfig());
    mComposer = std::make_unique<host::device::Composer>();
    if (mOptions.logs) {
        host::log::setListener([this](const host::log::Line& line) {
            if (mMutedThread.load() == std::this_thread::get_id()) return;
            mPrinter.log(line.priority, line.tag, line.text);
        });
    }
}

SessionRunner::~SessionRunner() {
    tearDown();
}

void SessionRunner::tearDown() {
    host::log::setListener(nullptr);
    for (auto& [name, callback] : mCallbacks) callback->detach();
    mClient.reset();
    mClients.clear();  // the client processes exit
    // The composer's proxy and the registry hold the last references: the service goes here,
    // before the vendor whose completions it may still be owed.
    mComposer.reset();
    host::binder::resetRegistry();
    mRecorder.reset();
    mDevice.reset();
    mRegion.reset();
    mCallbacks.clear();
    mCallbackBinders.clear();
    host::properties::clear();
}

bool SessionRunner::fail(const std::string& message) {
    mError = message;
    return false;
}

bool SessionRunner::run(const std::vector<Command>& commands) {
    for (const Command& c : commands) {
        if (!step(c)) return false;
    }
    return finish();
}

bool SessionRunner::step(const Command& c) {
    const bool setup =
            c.op == Op::Prop || c.op == Op::Panel || c.op == Op::FileWeights || c.op == Op::FileApl;
    // The command line's frame goes up once the panels are configured.
    if (!setup && !mFrameApplied && !applyCommandLineFrame()) return false;
    std::string note;
    if (!execute(c, &note)) {
        mErrorLine = c.line;
        return false;
    }
    // Phone set-up lines and sleeps say nothing worth a row.
    if (!setup && c.op != Op::Sleep && c.op != Op::Call && c.op != Op::Expect) {
        mPrinter.command(c.line, c.text, note);
    }
    if (c.op == Op::Boot) mBooted = true;
    if (mReport != nullptr && !mBooted && c.op != Op::Sleep) mReport->phone(c.text);
    return true;
}

bool SessionRunner::finish() {
    settle();
    if (!mFrameApplied && !applyCommandLineFrame()) return false;
    if (mExpects > 0) {
        std::string lines;
        for (int line : mDiffering)
            lines += (lines.empty() ? " (line " : ", ") + std::to_string(line);
        mPrinter.note("Replay: " + std::to_string(mExpects - static_cast<int>(mDiffering.size())) +
                      " of " + std::to_string(mExpects) + " answers as the device recorded them" +
                      (mDiffering.empty() ? "" : "; differing" + lines + ")"));
    }
    if (mReport != nullptr) {
        for (PanelId panel : kPanels) {
            if (!mRecorder->hasCapture(panel) || mSnapshotted[static_cast<int>(panel)]) continue;
            mReport->picture(std::string("The last capture of the ") + panelName(panel) +
                                     " panel, with the rectangles asked of it since",
                             mRecorder->picture(panel));
        }
        if (!mAnswers.empty()) {
            mReport->picture("RGB and luma answers by session line", AnswersPlot::render(mAnswers));
        }
    }
    return true;
}

bool SessionRunner::execute(const Command& c, std::string* note) {
    switch (c.op) {
        case Op::Prop:
            host::properties::set(c.str, c.str2);
            return true;
        case Op::Panel:
            mDevice->setPanelModes(c.panel, c.modes);
            showPictures(c.panel);
            return true;
        case Op::FileWeights:
            return fileWeights(c);
        case Op::FileApl:
            mDevice->setAplFile(c.present ? std::optional<std::string>(c.str) : std::nullopt);
            return true;
        case Op::Frame:
            return frame(c);
        case Op::VendorLatency:
            mDevice->setLatency(c.present ? std::optional<std::chrono::nanoseconds>(
                                                    std::chrono::milliseconds(c.nums[0]))
                                          : std::nullopt);
            return true;
        case Op::VendorNext:
            mDevice->displayConfig()->pushOutcome(
                    c.outcome, c.nums.empty() ? -1 : static_cast<int32_t>(c.nums[0]));
            mRecorder->expectOutcome(c.outcome);
            return true;
        case Op::VendorPresence:
            return mDevice->setVendorPresent(c.present) ||
                   fail("the service registry refused the vendor's display-config service");
        case Op::QServiceAnswer:
            mDevice->qservice()->setAnswer(static_cast<uint32_t>(c.nums[0]),
                                           static_cast<int32_t>(c.nums[1]));
            return true;
        case Op::QServicePresence:
            return mDevice->setQServicePresent(c.present) ||
                   fail("the service manager refused the display qservice");
        case Op::Sleep:
            std::this_thread::sleep_for(std::chrono::milliseconds(c.nums[0]));
            return true;
        case Op::Boot:
            return boot(note);
        case Op::Host:
            if (!host(c)) return false;
            settle();
            return true;
        case Op::ClientState:
            // A client that dies is its process exiting: its callback's binder answers
            // DEAD_OBJECT from then on. A process that has died does not come back.
            if (!c.present) {
                host::binder::kill(*client(c.str).process);
            } else if (!host::binder::isAlive(*client(c.str).process)) {
                return fail("client " + c.str + ": its process has died and cannot come back");
            }
            return true;
        case Op::Call:
            return call(c);
        case Op::Snapshot:
        case Op::Plot:
            return picture(c, note);
        case Op::Expect:
            expect(c);
            return true;
    }
    return fail("unknown command");
}

bool SessionRunner::boot(std::string* note) {
    for (const auto& [name, value] : mOptions.props) host::properties::set(name, value);
    if (mComposer->boot() != 0) return fail("CwbProxy::initialize() failed");
    if (client("").service == nullptr) {
        return fail("the service is not registered as " + instanceName());
    }
    mServedDisplay = displayIdProperty(kDisplayIdProp);
    if (mReport != nullptr) {
        for (const auto& [name, value] : mOptions.props)
            mReport->phone("--prop " + name + "=" + value);
        if (!mOptions.frame.empty()) mReport->phone("--frame " + mOptions.frame);
    }
    *note = "service registered as " + instanceName();
    return true;
}

bool SessionRunner::host(const Command& c) {
    const std::string& op = c.verb;
    const std::vector<int64_t>& n = c.nums;
    host::device::Composer& composer = *mComposer;
    if (op == "updateCwbStatus") {
        composer.status(n[0] != 0);
    } else if (op == "invalidCache") {
        composer.layerChange();
    } else if (op == "setPowerMode") {
        composer.powerMode(static_cast<uint64_t>(n[0]), static_cast<int>(n[1]));
    } else if (op == "notifyConfigChange") {
        // The composer switches the panel first and then tells the service.
        for (PanelId panel : kPanels) {
            const int32_t id =
                    displayIdProperty(panel == PanelId::Main ? kDisplayIdProp : kDisplayIdSecProp);
            const auto modes = mDevice->displayConfig()->panelModes(panel);
            if (id == -1 || n[0] != id || modes.empty()) continue;
            mDevice->setActiveMode(panel, static_cast<uint32_t>(n[1] % modes.size()));
            showPictures(panel);
        }
        composer.configChange(static_cast<uint64_t>(n[0]), static_cast<uint32_t>(n[1]));
    } else if (op == "updateAvailableConfigs") {
        composer.updateConfigs();
    } else if (op == "notifyColorModeChange") {
        composer.colorMode(static_cast<uint64_t>(n[0]), static_cast<int>(n[1]),
                           static_cast<int>(n[2]));
    } else if (op == "aodLayerExist") {
        composer.aodLayer(n[0] != 0);
    } else if (op == "fodLayerExist") {
        composer.fodLayer(n[0] != 0);
    } else {
        return fail("host: unknown operation " + op);
    }
    return true;
}

std::pair<int, int> SessionRunner::panelSize(PanelId panel) const {
    const auto modes = mDevice->displayConfig()->panelModes(panel);
    const uint32_t active = mDevice->displayConfig()->activeMode(panel);
    if (active >= modes.size()) return {0, 0};
    return {modes[active].width, modes[active].height};
}

void SessionRunner::showPictures(PanelId panel) {
    const auto [width, height] = panelSize(panel);
    for (FrameKind kind : kKinds) {
        const PanelPicture& picture = mPictures[static_cast<int>(panel)][static_cast<int>(kind)];
        if (picture.empty()) continue;
        auto frame = std::make_shared<const Frame>(picture.render(width, height));
        mDevice->setFrame(panel, kind, *frame);
        mRecorder->setFrame(panel, kind, std::move(frame));
    }
}

bool SessionRunner::frame(const Command& c) {
    PanelPicture& picture = mPictures[static_cast<int>(c.panel)][static_cast<int>(c.kind)];
    const auto [width, height] = panelSize(c.panel);
    switch (c.frame) {
        case FrameSource::Fill:
            picture.fill(c.colour);
            break;
        case FrameSource::Pattern:
            picture.pattern(c.str);
            break;
        case FrameSource::Paint:
            picture.paint(c.rect, c.colour);
            break;
        case FrameSource::Png: {
            const std::string path = resolve(c.str);
            int w = 0, h = 0;
            std::string error;
            if (!PngFile::size(path, &w, &h, &error)) return fail("frame: " + error);
            if (w != width || h != height) {
                return fail("frame: " + path + " is " + std::to_string(w) + "x" +
                            std::to_string(h) + ", the " + panelName(c.panel) + " panel is " +
                            std::to_string(width) + "x" + std::to_string(height));
            }
            Frame image;
            if (!PngFile::read(path, &image, &error)) return fail("frame: " + error);
            picture.image(std::move(image));
            break;
        }
    }
    showPictures(c.panel);
    return true;
}

bool SessionRunner::applyCommandLineFrame() {
    mFrameApplied = true;
    if (mOptions.frame.empty()) return true;
    Command c;
    c.op = Op::Frame;
    c.frame = FrameSource::Png;
    // Relative to the working directory, like the session file itself.
    c.str = std::filesystem::absolute(mOptions.frame).string();
    if (frame(c)) return true;
    mError = "--frame " + mOptions.frame + ": " + mError.substr(std::string("frame: ").size());
    mErrorLine = 0;
    return false;
}

bool SessionRunner::fileWeights(const Command& c) {
    if (!c.present) {  // the text itself, as a session dump gives it
        mDevice->writeWeights(c.panel, c.str);
        return true;
    }
    const std::string path = resolve(c.str);
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        return fail("file weights: cannot read " + path + ": " + strerror(EISDIR));
    }
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    if (in) text << in.rdbuf();  // an empty file inserts nothing, which is not a read error
    if (!in || in.bad()) return fail("file weights: cannot read " + path);
    if (text.str().empty()) return fail("file weights: " + path + " is empty");
    mDevice->writeWeights(c.panel, text.str());
    if (mReport != nullptr) mReport->file(path, text.str());
    return true;
}

SessionRunner::Client& SessionRunner::client(const std::string& name) {
    Client& c = mClients[name];
    if (c.process == nullptr) c.process = host::binder::newProcess(name.empty() ? "cwb-sim" : name);
    if (c.service == nullptr) {
        host::binder::ProcessScope in(c.process);
        c.service = cwb::ICwbService::fromBinder(
                ndk::SpAIBinder(AServiceManager_checkService(instanceName().c_str())));
    }
    return c;
}

void SessionRunner::settle() {
    for (auto& [name, c] : mClients) host::binder::waitIdle(*c.process);
    std::vector<Event> events;
    {
        std::lock_guard<std::mutex> lock(mEventMutex);
        events.swap(mEvents);
    }
    // Each client runs its notifications on its own threads; the service sent them in order.
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.sent < b.sent; });
    for (const Event& e : events) mPrinter.event(e.client, e.status);
}

std::shared_ptr<ClientCallback> SessionRunner::callback(const std::string& name) {
    auto it = mCallbacks.find(name);
    if (it != mCallbacks.end()) return it->second;
    auto created = ndk::SharedRefBase::make<ClientCallback>(
            name, [this](const std::string& who, bool status) {
                std::lock_guard<std::mutex> lock(mEventMutex);
                mEvents.push_back({host::binder::currentTransaction(), who, status});
            });
    mCallbacks.emplace(name, created);
    // The callback's binder belongs to its client's process, which keeps it while it lives.
    host::binder::ProcessScope in(client(name).process);
    mCallbackBinders.emplace(name, created->asBinder());
    return created;
}

bool SessionRunner::call(const Command& c) {
    CallRecord r;
    r.name = c.verb;
    r.line = c.line;
    r.request = c.text;
    const std::string& m = c.verb;
    // The session's process makes every call; a named client's callback lives in its own.
    Client& caller = client("");
    if (caller.service == nullptr)
        return fail("the service is not registered as " + instanceName());
    host::binder::ProcessScope in(caller.process);
    mClient = caller.service;
    cwb::Error error = cwb::Error::NONE;
    ndk::ScopedAStatus status = ndk::ScopedAStatus::ok();
    if (m == "getRGBValue") {
        cwb::Rgb rgb;
        status = mClient->getRGBValue(c.rect, &rgb, &error);
        r.rgb = {rgb.r, rgb.g, rgb.b};
        r.error = static_cast<int32_t>(error);
    } else if (m == "getLumasValue") {
        std::vector<float> lumas;
        status = mClient->getLumasValue(c.rect, &lumas, &error);
        r.lumas = lumas;
        r.error = static_cast<int32_t>(error);
    } else if (m == "getHistogramValue") {
        cwb::Histogram histogram;
        status = mClient->getHistogramValue(c.rect, &histogram, &error);
        r.histogram = histogram.counts;
        r.error = static_cast<int32_t>(error);
        if (status.isOk()) {
            mLastHistogram = histogram;
            mLastHistogramTitle = "LINE " + std::to_string(c.line) + " " + c.text;
            if (mReport != nullptr) {
                mReport->picture("Line " + std::to_string(c.line) + ": " + c.text,
                                 HistogramPlot::render(histogram, mLastHistogramTitle));
            }
        }
    } else if (m == "getCwbValue") {
        std::vector<int32_t> values;
        r.feature = static_cast<int32_t>(c.nums[0]);
        status = mClient->getCwbValue(r.feature, c.rect, &values, &error);
        r.values = values;
        r.error = static_cast<int32_t>(error);
        // The dispatcher moves the service's display selection; later rectangles follow it.
        if (r.feature == 1) mServedDisplay = 0;
        const int32_t sec = displayIdProperty(kDisplayIdSecProp);
        if (r.feature == 3 && sec != -1) mServedDisplay = sec;
    } else if (m == "setDebug") {
        status = mClient->setDebug(c.list, &error);
        r.error = static_cast<int32_t>(error);
    } else if (m == "enable" || m == "disable" || m == "getCwbPostProcessStatus") {
        bool result = false;
        status = m == "enable"    ? mClient->enable(&result)
                 : m == "disable" ? mClient->disable(&result)
                                  : mClient->getCwbPostProcessStatus(&result);
        r.result = result;
    } else if (m == "setCwbPostProcessStatus") {
        status = mClient->setCwbPostProcessStatus(c.nums[0] != 0, &error);
        r.error = static_cast<int32_t>(error);
    } else if (m == "registerCallback" || m == "unregisterCallback") {
        const std::shared_ptr<ClientCallback> cb = callback(c.str);
        status = m == "registerCallback" ? mClient->registerCallback(cb, &error)
                                         : mClient->unregisterCallback(cb, &error);
        r.error = static_cast<int32_t>(error);
        r.client = c.str;
    } else if (!shared(c, &r, &status)) {
        return false;
    }
    r.status = statusCode(status);
    if (r.status != 0) {
        // Over binder a failed status carries neither the result nor the out-values.
        r.error.reset();
        r.rgb.reset();
        r.lumas.reset();
        r.histogram.reset();
        r.values.reset();
        r.result.reset();
    } else if (c.hasRect) {
        recordRect(r, c.rect);
    }
    if (r.status == 0 && (r.error.value_or(0) & 0xFFFF) == 0) {
        if (r.rgb)
            mAnswers.push_back(
                    {c.line, std::array<int, 3>{(*r.rgb)[0], (*r.rgb)[1], (*r.rgb)[2]}, {}});
        if (r.lumas && !r.lumas->empty()) mAnswers.push_back({c.line, {}, (*r.lumas)[0]});
        if (m == "getCwbValue" && r.values && r.values->size() >= 3 && r.feature != 2) {
            const auto& v = *r.values;
            mAnswers.push_back({c.line, std::array<int, 3>{v[0], v[1], v[2]}, {}});
        }
    }
    settle();
    mPrinter.call(r);
    mLastCall = r;
    return true;
}

bool SessionRunner::shared(const Command& c, CallRecord* r, ndk::ScopedAStatus* status) {
    const std::string& m = c.verb;
    cwb::Error error = cwb::Error::NONE;
    if (m == "initializeSharedMemory") {
        std::unique_ptr<SharedRegion> fresh;
        if (c.present) {
            fresh = std::make_unique<SharedRegion>();
            std::string why;
            const int64_t fileSize = c.nums.size() > 1 ? c.nums[1] : c.nums[0];
            if (!fresh->create(static_cast<size_t>(fileSize), &why)) {
                return fail("initializeSharedMemory: cannot create the client's region: " + why);
            }
        }
        // The call sends a duplicate; the client keeps owning its descriptor.
        ndk::ScopedFileDescriptor fd(fresh ? fresh->fd() : -1);
        *status = mClient->initializeSharedMemory(
                0, c.present ? static_cast<int32_t>(c.nums[0]) : 0, fd, &error);
        static_cast<void>(fd.release());  // the region's, not ours to close
        // The old region is closed only now, so the new one cannot get its descriptor number.
        if (fresh) mRegion = std::move(fresh);
        r->error = static_cast<int32_t>(error);
    } else if (m == "getSharedData") {
        std::vector<int32_t> values;
        r->feature = static_cast<int32_t>(c.nums[0]);
        ndk::ScopedFileDescriptor fd(mRegion ? mRegion->fd() : -1);
        *status = mClient->getSharedData(r->feature, c.rect, fd, static_cast<int32_t>(c.nums[1]),
                                         &values, &error);
        static_cast<void>(fd.release());  // the region's, not ours to close
        r->values = values;
        r->error = static_cast<int32_t>(error);
    } else if (m == "getScreenResolution") {
        std::vector<int32_t> values;
        *status = mClient->getScreenResolution(0, &values, &error);
        r->values = values;
        r->error = static_cast<int32_t>(error);
    } else if (m == "releaseSharedMemory") {
        *status = mClient->releaseSharedMemory(0, 0, &error);
        r->error = static_cast<int32_t>(error);
    } else if (m == "readShared") {
        const auto offset = static_cast<size_t>(c.nums[0]);
        const auto length = static_cast<size_t>(c.nums[1]);
        if (mRegion == nullptr || mRegion->size() == 0) {
            return fail("readShared: no shared memory region yet (initializeSharedMemory SIZE)");
        }
        std::vector<uint8_t> bytes;
        if (!mRegion->read(offset, length, &bytes)) {
            return fail("readShared: bytes " + std::to_string(offset) + " to " +
                        std::to_string(offset + length) + " are outside the " +
                        std::to_string(mRegion->size()) + "-byte region");
        }
        r->bytes = std::move(bytes);
        r->offset = static_cast<int64_t>(offset);
    } else {
        return fail("unknown client call " + m);
    }
    return true;
}

void SessionRunner::recordRect(const CallRecord& call, const Rect& rect) {
    const std::string& method = call.name;
    const int32_t feature = call.feature;
    const int32_t error = call.error.value_or(0);
    if ((error & 0xFFFF) == static_cast<int32_t>(cwb::Error::INVALID_ARGUMENT)) return;
    std::optional<PanelId> panel;
    bool convert = true;
    if (method == "getRGBValue" || (method == "getCwbValue" && (feature == 1 || feature == 3))) {
        if (mServedDisplay == 0) panel = PanelId::Main;
        if (mServedDisplay == 3) panel = PanelId::Secondary;
    } else if (method == "getLumasValue" || method == "getHistogramValue" ||
               (method == "getCwbValue" && feature == 2)) {
        panel = PanelId::Main;  // these always read the main display's buffer
    } else if (method == "getSharedData" && feature == 5) {
        panel = PanelId::Main;
        convert = false;  // the crop takes the rectangle exactly as sent
    }
    if (!panel) return;
    Rect out = rect;
    if (convert) {
        // The service's own conversion, so the outline is where it read; its log lines belong
        // to the simulator, not to the session.
        const auto service = mComposer->proxy().service();
        if (service == nullptr) return;
        mMutedThread = std::this_thread::get_id();
        const bool accepted = service->checkInputRect(rect, out);
        mMutedThread = std::thread::id();
        if (!accepted) return;
    }
    Mark mark;
    mark.buffer = out;
    mark.line = call.line;
    mark.answer = shortAnswer(call);
    // The client's rectangle where it differs: fractions scaled to the panel, or a rotation.
    const auto [width, height] = panelSize(*panel);
    auto pixels = [](int32_t v, int size) {
        return v < 0 ? static_cast<int32_t>(static_cast<int64_t>(v & 0x7FFFFFFF) * size / 100000)
                     : v;
    };
    const Rect client{pixels(rect.left, width), pixels(rect.top, height), pixels(rect.right, width),
                      pixels(rect.bottom, height)};
    if (client != out) mark.client = client;
    // Weights weigh an RGB window of exactly their count on their own display.
    const bool rgb = method == "getRGBValue" || (method == "getCwbValue" && feature != 2);
    const auto service = mComposer->proxy().service();
    if (rgb && service != nullptr) {
        const cwb::implementation::CwbServiceTestPeer peer(*service);
        const bool sec = *panel == PanelId::Secondary;
        const int64_t area = int64_t{out.right - out.left} * (out.bottom - out.top);
        std::vector<int32_t> weights = peer.weights(sec);
        if (peer.weightsCount(sec) == area && area > 0 &&
            weights.size() >= static_cast<size_t>(area)) {
            weights.resize(static_cast<size_t>(area));
            mark.weights = std::move(weights);
        }
    }
    mRecorder->addMark(*panel, std::move(mark));
}

void SessionRunner::expect(const Command& c) {
    ++mExpects;
    std::string same, differ;
    for (const auto& [key, device] : c.expects) {
        const std::string here = answerWord(key);
        if (here == device) {
            same += (same.empty() ? "" : ", ") + key + " " + device;
        } else {
            differ += (differ.empty() ? "" : "; ") + key + " " + here + " here, " + device +
                      " on the device";
        }
    }
    if (!differ.empty()) mDiffering.push_back(mLastCall ? mLastCall->line : c.line);
    mPrinter.expect(c.line, differ.empty(), differ.empty() ? same : differ);
}

std::string SessionRunner::answerWord(const std::string& key) const {
    if (!mLastCall) return "none";
    const CallRecord& r = *mLastCall;
    if (r.status != 0) return "status " + std::to_string(r.status);
    if (key == "error" && r.error) {
        static constexpr const char* kErrors[] = {"NONE", "FAILED", "INVALID_ARGUMENT",
                                                  "SCREEN_OFF"};
        const uint32_t low = static_cast<uint32_t>(*r.error) & 0xFFFF;
        return low < 4 ? kErrors[low] : std::to_string(low);
    }
    if (key == "state" && r.error) return std::to_string(static_cast<uint32_t>(*r.error) >> 16);
    if (key == "rgb" && r.rgb) return joined(r.rgb->data(), 3);
    if (key == "luma" && r.lumas && !r.lumas->empty()) return fixed("%.6f", (*r.lumas)[0]);
    if (key == "result" && r.result) return *r.result ? "true" : "false";
    if ((key == "values" || key == "count") && r.values) {
        if (key == "count") return std::to_string(r.values->size());
        // getCwbValue's times after the colour differ on every run; only the colour compares.
        const size_t n = std::min<size_t>(r.values->size(), r.name == "getCwbValue" ? 4 : 6);
        return joined(r.values->data(), n);
    }
    if ((key == "means" || key == "checksum") && r.histogram) {
        // As the device's dump summarises it: means in hundredths, FNV-1a over the counts.
        uint64_t sum[3] = {}, pixels[3] = {};
        uint32_t hash = 2166136261u;
        for (size_t i = 0; i < r.histogram->size(); ++i) {
            const auto count = static_cast<uint32_t>((*r.histogram)[i]);
            sum[i % 3] += (i / 3) * uint64_t{count};
            pixels[i % 3] += count;
            for (int b = 0; b < 4; ++b) hash = (hash ^ ((count >> (8 * b)) & 0xFF)) * 16777619u;
        }
        char text[32];
        if (key == "checksum") {
            snprintf(text, sizeof(text), "%08x", hash);
            return text;
        }
        std::string out;
        for (int ch = 0; ch < 3; ++ch) {
            const uint64_t m = pixels[ch] == 0 ? 0 : (sum[ch] * 100 + pixels[ch] / 2) / pixels[ch];
            snprintf(text, sizeof(text), "%s%llu.%02llu", ch == 0 ? "" : ",",
                     static_cast<unsigned long long>(m / 100),
                     static_cast<unsigned long long>(m % 100));
            out += text;
        }
        return out;
    }
    return "none";
}

bool SessionRunner::picture(const Command& c, std::string* note) {
    std::string error;
    Frame image;
    if (c.op == Op::Snapshot) {
        if (!mRecorder->hasCapture(c.panel)) {
            return fail(std::string("snapshot: nothing has been captured on the ") +
                        panelName(c.panel) + " panel yet");
        }
        image = mRecorder->picture(c.panel);
        mSnapshotted[static_cast<int>(c.panel)] = true;
        *note = "wrote " + c.str + ", " + std::to_string(image.width) + "x" +
                std::to_string(image.height) + " with " +
                std::to_string(mRecorder->rectCount(c.panel)) + " rectangle(s) outlined";
    } else if (c.verb == "answers") {
        if (mAnswers.empty()) return fail("plot answers: no RGB or luma answer yet");
        image = AnswersPlot::render(mAnswers);
        *note = "wrote " + c.str + ", " + std::to_string(mAnswers.size()) + " answer(s)";
    } else {
        if (!mLastHistogram) return fail("plot histogram: no getHistogramValue answer yet");
        image = HistogramPlot::render(*mLastHistogram, mLastHistogramTitle);
        *note = "wrote " + c.str;
    }
    // Plots of histograms are in the report already, one per answer.
    if (mReport != nullptr && (c.op == Op::Snapshot || c.verb == "answers")) {
        mReport->picture("Line " + std::to_string(c.line) + ": " + c.text, image);
    }
    if (!PngFile::write(c.str, image, &error)) {
        return fail(std::string(c.op == Op::Snapshot ? "snapshot: " : "plot: ") + error);
    }
    return true;
}

std::string SessionRunner::resolve(const std::string& path) const {
    if (path.empty() || path.front() == '/' || mBaseDir.empty()) return path;
    return mBaseDir + "/" + path;
}

}  // namespace cwbsim
