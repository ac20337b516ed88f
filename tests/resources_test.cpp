// The composer's descriptors, threads and mappings come back to where they started after
// hostile clients and a failing vendor: a leak per call would take the display down in time.
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include "process_resources.h"
#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using Outcome = host::device::SimulatedDisplayConfig::Outcome;

ndk::ScopedFileDescriptor memfd(off_t size, unsigned flags = MFD_CLOEXEC) {
    ndk::ScopedFileDescriptor fd(memfd_create("cwb_hostile_region", flags));
    EXPECT_EQ(0, ftruncate(fd.get(), size));
    return fd;
}

class ResourcesTest : public ServiceTest {
  protected:
    Error err = Error::NONE;

    ndk::ScopedAStatus init(int32_t size, const ndk::ScopedFileDescriptor& fd) {
        return service->initializeSharedMemory(0, size, fd, &err);
    }
    // A fresh capture, whose answer the vendor's next outcome decides.
    int32_t capture() {
        composer->layerChange();
        EXPECT_TRUE(gateOpen());
        return rgb(rect(0, 0, 8, 8)).first & 0xFFFF;
    }
    // A crop of 100 x 100 (a record of 30012 bytes) from a fresh capture.
    Error copy() {
        std::vector<int32_t> values;
        EXPECT_EQ(0, capture());
        err = Error::FAILED;
        (void)service->getSharedData(5, rect(0, 0, 100, 100), {}, 30012, &values, &err);
        return err;
    }

    // Refused, replaced and shrunk regions, a client that dies holding its region and callback,
    // and vendor faults; ends with no region mapped.
    void hostile(bool dropCompletion) {
        int sockets[2];
        ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, sockets));
        const ndk::ScopedFileDescriptor socket(sockets[0]), peerEnd(sockets[1]),
                small = memfd(4096);
        const std::pair<int32_t, const ndk::ScopedFileDescriptor*> refused[] = {
                {30020, &small}, {0, &small}, {-1, &small}, {4096, &socket}};
        for (const auto& [size, fd] : refused) {
            EXPECT_EQ(-1, init(size, *fd).getServiceSpecificError()) << size;
        }
        const ndk::ScopedFileDescriptor sealable = memfd(65536, MFD_ALLOW_SEALING),
                                        shrinkable = memfd(65536);
        ASSERT_TRUE(init(40000, sealable).isOk());
        EXPECT_EQ(Error::NONE, copy());
        ASSERT_TRUE(init(40000, shrinkable).isOk());  // replaces the sealed region
        ASSERT_EQ(0, ftruncate(shrinkable.get(), 4096));
        EXPECT_EQ(Error::INVALID_ARGUMENT, copy());

        std::thread([this] {
            Error ignored;
            EXPECT_TRUE(init(40000, memfd(65536)).isOk());
            EXPECT_TRUE(service->registerCallback(RecordingCallback::make(true), &ignored).isOk());
        }).join();
        composer->status(false);  // reaches the dead client too
        composer->status(true);

        for (Outcome outcome : {Outcome::Error, Outcome::Refuse, Outcome::Drop}) {
            if (outcome == Outcome::Drop && !dropCompletion) continue;
            device->displayConfig()->pushOutcome(outcome);
            EXPECT_EQ(1, capture());
        }
        EXPECT_TRUE(service->releaseSharedMemory(0, 0, &err).isOk());
    }
};

TEST_F(ResourcesTest, HostileClientsAndVendorFaultsLeaveNothingBehind) {
    bootOn();
    hostile(false);  // capture buffer, arenas and any lazily made thread
    const ProcessResources before = ProcessResources::now();
    hostile(true);
    hostile(false);
    EXPECT_EQ(before.counts(), ProcessResources::settled(before).counts());  // fds, threads, maps
}

}  // namespace
}  // namespace cwbtest
