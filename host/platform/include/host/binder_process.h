// Host-only: the processes of the in-process binder. Every thread runs "in" one process: the
// first process (the composer, where the service and the vendor stand-ins live) unless a
// ProcessScope says otherwise; binder threads run in the process that owns them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace host::binder {

class Process;

// A new client process, alive until kill() or the last reference goes.
std::shared_ptr<Process> newProcess(const std::string& name);
// The process the calling thread runs in.
std::shared_ptr<Process> currentProcess();
// The composer process: the service's and the device's.
std::shared_ptr<Process> mainProcess();
const std::string& processName(const Process& process);
// Kills process: its binders answer DEAD_OBJECT from then on, its services leave the service
// manager, death recipients linked to its binders run in their own processes, and calls it
// makes fail with DEAD_OBJECT.
void kill(Process& process);
bool isAlive(const Process& process);
// Waits until every binder thread of process is idle and its queues are empty; false after
// timeoutMs (a negative one waits as long as it takes, for the manual clock). Lets a test wait
// for oneway calls and death notifications without sleeping.
bool waitIdle(Process& process, int timeoutMs = 5000);
// The number of the transaction the calling thread runs, 0 outside one. Transactions between
// processes are numbered in the order they were sent, whichever thread runs them.
uint64_t currentTransaction();
// Threads a process's binder pool has started so far.
size_t poolThreads(const Process& process);

// Runs the calling thread in process until the scope ends.
class ProcessScope {
  public:
    explicit ProcessScope(std::shared_ptr<Process> process);
    ~ProcessScope();
    ProcessScope(const ProcessScope&) = delete;
    ProcessScope& operator=(const ProcessScope&) = delete;

  private:
    std::shared_ptr<Process> mProcess;
    std::shared_ptr<Process> mPrevious;
};

}  // namespace host::binder
