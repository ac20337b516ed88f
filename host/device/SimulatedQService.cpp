#include <device/SimulatedQService.h>

#include <algorithm>
#include <iterator>

namespace host::device {

android::status_t SimulatedQService::dispatch(uint32_t command, const android::Parcel* in,
                                              android::Parcel* out) {
    QServiceCommand record{command, {}};
    if (in != nullptr) {
        const size_t start = in->dataPosition();
        in->setDataPosition(0);
        int32_t value = 0;
        while (in->dataPosition() + sizeof(int32_t) <= in->dataSize() &&
               in->readInt32(&value) == android::OK) {
            record.in.push_back(value);
        }
        in->setDataPosition(start);
    }
    std::lock_guard<std::mutex> lock(mMutex);
    const bool answers = std::find(std::begin(kAnsweredCodes), std::end(kAnsweredCodes), command) !=
                         std::end(kAnsweredCodes);
    if (answers && out != nullptr) {
        auto it = mAnswers.find(command);
        out->writeInt32(it != mAnswers.end() ? it->second : 0);
    }
    mCommands.push_back(std::move(record));
    if (mCommands.size() > kHistoryWindow) mCommands.pop_front();
    ++mCommandCount;
    mChanged.notify_all();
    return android::OK;
}

void SimulatedQService::setAnswer(uint32_t code, int32_t value) {
    std::lock_guard<std::mutex> lock(mMutex);
    mAnswers[code] = value;
}

std::vector<QServiceCommand> SimulatedQService::commands() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return {mCommands.begin(), mCommands.end()};
}

std::vector<QServiceCommand> SimulatedQService::commands(uint32_t code) const {
    std::vector<QServiceCommand> matching;
    std::lock_guard<std::mutex> lock(mMutex);
    for (const QServiceCommand& c : mCommands) {
        if (c.code == code) matching.push_back(c);
    }
    return matching;
}

void SimulatedQService::clearCommands() {
    std::lock_guard<std::mutex> lock(mMutex);
    mCommands.clear();
    mCommandCount = 0;
}

bool SimulatedQService::waitForCommands(size_t n, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, timeout, [&] { return mCommandCount >= n; });
}

}  // namespace host::device
