// Plays parsed session commands on a simulated phone: the device of host/device, the composer
// driving CwbProxy, and a client that calls the registered ICwbService as another process would.
// The phone is built in the constructor and taken apart in the destructor, service first, so a
// run leaves no thread, buffer or registration behind.
#pragma once

#include <CwbProxy.h>
#include <CwbService.h>
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <device/Composer.h>
#include <device/Device.h>

#include <host/binder_process.h>
#include <atomic>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "AnswersPlot.h"
#include "CallRecord.h"
#include "ClientCallback.h"
#include "Command.h"
#include "Options.h"
#include "PanelPicture.h"
#include "Printer.h"
#include "Report.h"
#include "SharedRegion.h"
#include "SnapshotRecorder.h"

namespace cwbsim {

class SessionRunner {
  public:
    // Relative input files (weights, PNG frames) are looked up in baseDir; outputs are written
    // where the path says, relative to the working directory.
    SessionRunner(const Options& options, std::string baseDir, Printer& printer);
    ~SessionRunner();
    SessionRunner(const SessionRunner&) = delete;
    SessionRunner& operator=(const SessionRunner&) = delete;

    // Plays the commands in order; false at the first that could not be done.
    bool run(const std::vector<Command>& commands);
    // The same one command at a time: step() for each, then finish() once. False stops the run.
    bool step(const Command& c);
    bool finish();
    // Collects the phone, every picture and extra plots for --report; set before the first step.
    void setReport(Report* report) { mReport = report; }
    // Why run() stopped, and at which session line (0 for the command line's --frame).
    const std::string& error() const { return mError; }
    int errorLine() const { return mErrorLine; }

  private:
    using Rect = aidl::vendor::zarel::hardware::cwb::Rect;

    bool execute(const Command& c, std::string* note);
    bool fail(const std::string& message);
    bool boot(std::string* note);
    bool host(const Command& c);
    bool frame(const Command& c);
    bool call(const Command& c);
    bool shared(const Command& c, CallRecord* r, ndk::ScopedAStatus* status);
    bool picture(const Command& c, std::string* note);
    void expect(const Command& c);
    // The answer of the last call as expect words (error=, rgb=, ...).
    std::string answerWord(const std::string& key) const;
    bool applyCommandLineFrame();
    bool fileWeights(const Command& c);

    // Draws both outputs of a panel again at its current mode's size.
    void showPictures(host::device::PanelId panel);
    std::pair<int, int> panelSize(host::device::PanelId panel) const;
    std::optional<host::device::PanelId> panelOfDisplay(int64_t display) const;
    std::shared_ptr<ClientCallback> callback(const std::string& name);
    // A client process with its proxy of the service: the session's own ("") or a named client's.
    struct Client {
        std::shared_ptr<host::binder::Process> process;
        std::shared_ptr<aidl::vendor::zarel::hardware::cwb::ICwbService> service;
    };
    Client& client(const std::string& name);
    // Waits until every client has run the oneway calls sent to it, so that their lines come
    // before the row of the request that caused them.
    void settle();
    // Marks the rectangle a request analysed, in capture-buffer pixels, for snapshots.
    void recordRect(const CallRecord& r, const Rect& rect);
    std::string resolve(const std::string& path) const;
    void tearDown();

    const Options mOptions;
    const std::string mBaseDir;
    Printer& mPrinter;
    std::string mError;
    int mErrorLine = 0;

    // Log lines that the simulator itself causes on this thread are not the session's.
    std::atomic<std::thread::id> mMutedThread{};
    std::unique_ptr<host::device::Device> mDevice;
    std::unique_ptr<SnapshotRecorder> mRecorder;
    std::unique_ptr<host::device::Composer> mComposer;
    std::map<std::string, Client> mClients;
    struct Event {
        uint64_t sent;  // the transaction's number: the order the service sent them in
        std::string client;
        bool status;
    };
    std::mutex mEventMutex;
    std::vector<Event> mEvents;  // guarded by mEventMutex; printed by settle()
    std::shared_ptr<aidl::vendor::zarel::hardware::cwb::ICwbService> mClient;  // the calling one
    std::map<std::string, std::shared_ptr<ClientCallback>> mCallbacks;
    std::map<std::string, ndk::SpAIBinder> mCallbackBinders;
    std::unique_ptr<SharedRegion> mRegion;
    PanelPicture mPictures[2][2];  // [panel][kind]
    bool mFrameApplied = false;
    int32_t mServedDisplay = -1;  // the service's display selection, as the calls moved it
    std::optional<aidl::vendor::zarel::hardware::cwb::Histogram> mLastHistogram;
    std::string mLastHistogramTitle;
    std::optional<CallRecord> mLastCall;
    std::vector<Answer> mAnswers;  // RGB and luma answers, for plot answers
    int mExpects = 0;
    std::vector<int> mDiffering;  // lines of the expects that differed
    Report* mReport = nullptr;
    bool mBooted = false;
    bool mSnapshotted[2] = {false, false};  // a snapshot command ran for the panel
};

}  // namespace cwbsim
