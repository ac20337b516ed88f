// The display qservice of the vendor's composer, reduced to the commands the CWB library sends.
#pragma once

#include <IQService.h>
#include <binder/Parcel.h>
#include <utils/Errors.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

namespace host::device {

struct QServiceCommand {
    uint32_t code;
    std::vector<int32_t> in;  // every int32 of the in parcel, in order
};

class SimulatedQService : public qService::BnQService {
  public:
    static constexpr const char* kName = "display.qservice";
    // Commands that answer one int32 in the out parcel.
    static constexpr uint32_t kAnsweredCodes[] = {303, 304};

    // Records the command; 303 and 304 answer one int32 (setAnswer, 0 by default) in out, other
    // commands leave out untouched. Always OK.
    android::status_t dispatch(uint32_t command, const android::Parcel* in,
                               android::Parcel* out) override;

    // The most recent kHistoryWindow commands are kept, oldest first, so that a long session or
    // soak runs in bounded memory; waitForCommands counts every command since the last clear.
    static constexpr size_t kHistoryWindow = 4096;

    void setAnswer(uint32_t code, int32_t value);
    std::vector<QServiceCommand> commands() const;
    std::vector<QServiceCommand> commands(uint32_t code) const;
    void clearCommands();
    // Commands may come from the library's own threads.
    bool waitForCommands(size_t n, std::chrono::milliseconds timeout) const;

  private:
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::map<uint32_t, int32_t> mAnswers;
    std::deque<QServiceCommand> mCommands;
    size_t mCommandCount = 0;  // since the last clear, beyond the window too
};

}  // namespace host::device
