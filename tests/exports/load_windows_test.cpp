// The dynamic library as a host on Windows loads and unloads it, and its entry point called as the loader calls it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <thread>

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <gtest/gtest.h>

#include "allocation_counter.hpp"
#include "exports/current_record.hpp"
#include "frame/record.hpp"
#include "orvikbase/orvikbase.h"

// Linked with this program as an ordinary function.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

namespace {

// A record is so large that the system hands its pages out and takes them back one by one.
bool isMemory(const void *address) {
    MEMORY_BASIC_INFORMATION region{};
    EXPECT_NE(VirtualQuery(address, &region, sizeof region), 0U);
    return region.State == MEM_COMMIT;
}

bool isZeroed(const OVRecord *record) {
    const auto *const bytes = reinterpret_cast<const unsigned char *>(record);
    return std::all_of(bytes, bytes + sizeof *record, [](unsigned char byte) { return byte == 0; });
}

// ---- The entry point, one notification at a time

class EntryPoint : public ::testing::Test {
protected:
    void SetUp() override {
        before_ = ov::currentRecord;
        VELTASetWaveVariablesPointer(nullptr);
    }
    void TearDown() override { VELTASetWaveVariablesPointer(before_); }

    static BOOL notify(DWORD reason) { return DllMain(nullptr, reason, nullptr); }

private:
    OVRecord *before_ = nullptr;
};

TEST_F(EntryPoint, ProcessAttachMakesAZeroedRecordCurrent) {
    EXPECT_EQ(notify(DLL_PROCESS_ATTACH), TRUE);
    ASSERT_NE(ov::currentRecord, nullptr);
    EXPECT_TRUE(isZeroed(ov::currentRecord));
    EXPECT_EQ(notify(DLL_PROCESS_DETACH), TRUE);
}

TEST_F(EntryPoint, ProcessDetachReleasesThatRecord) {
    notify(DLL_PROCESS_ATTACH);
    const OVRecord *const record = ov::currentRecord;
    EXPECT_TRUE(isMemory(record));
    EXPECT_EQ(notify(DLL_PROCESS_DETACH), TRUE);
    EXPECT_FALSE(isMemory(record));
    EXPECT_EQ(ov::currentRecord, record); // a released record stays current
}

TEST_F(EntryPoint, ThreadNotificationsChangeNothing) {
    for (const DWORD reason : {DLL_THREAD_ATTACH, DLL_THREAD_DETACH}) {
        const orvik::test::AllocationCounter counter;
        EXPECT_EQ(notify(reason), TRUE);
        EXPECT_EQ(counter.count(), 0U);
        EXPECT_EQ(ov::currentRecord, nullptr);
    }
    notify(DLL_PROCESS_ATTACH);
    OVRecord *const record = ov::currentRecord;
    for (const DWORD reason : {DLL_THREAD_ATTACH, DLL_THREAD_DETACH}) {
        EXPECT_EQ(notify(reason), TRUE);
        EXPECT_EQ(ov::currentRecord, record);
        ASSERT_TRUE(isMemory(record));
        EXPECT_TRUE(isZeroed(record));
    }
    notify(DLL_PROCESS_DETACH);
    EXPECT_FALSE(isMemory(record));
}

TEST_F(EntryPoint, ARecordThatTheHostReleasedIsNotReleasedAgain) {
    notify(DLL_PROCESS_ATTACH);
    OVFreeVarPtr(ov::currentRecord);
    // What is allocated next may lie where the record was.
    OVRecord *const hosts = OVAllocateVarPtr();
    ASSERT_NE(hosts, nullptr);
    EXPECT_EQ(notify(DLL_PROCESS_DETACH), TRUE);
    EXPECT_TRUE(isMemory(hosts));
    OVFreeVarPtr(hosts);
}

TEST_F(EntryPoint, AHostsRecordIsLeftAlone) {
    notify(DLL_PROCESS_ATTACH);
    const OVRecord *const own = ov::currentRecord;
    OVRecord *const hosts = OVAllocateVarPtr(); // and current
    ASSERT_NE(hosts, nullptr);
    EXPECT_EQ(notify(DLL_PROCESS_DETACH), TRUE);
    EXPECT_FALSE(isMemory(own));
    EXPECT_TRUE(isMemory(hosts));
    EXPECT_EQ(ov::currentRecord, hosts);
    OVFreeVarPtr(hosts);
}

// ---- The loader

class LoadedLibrary {
public:
    LoadedLibrary() : handle_(LoadLibraryA(ORVIK_SHARED_LIBRARY)) {
        EXPECT_NE(handle_, nullptr) << "error " << GetLastError();
    }
    ~LoadedLibrary() { unload(); }
    LoadedLibrary(const LoadedLibrary &) = delete;
    LoadedLibrary &operator=(const LoadedLibrary &) = delete;

    void unload() {
        if (handle_ != nullptr) {
            EXPECT_NE(FreeLibrary(handle_), 0);
            handle_ = nullptr;
        }
    }

    template <class Function> Function *function(const char *name) const {
        const FARPROC address = GetProcAddress(handle_, name);
        EXPECT_NE(address, nullptr) << name;
        return reinterpret_cast<Function *>(reinterpret_cast<void *>(address));
    }

    // Address of the library's own current record, by way of the spectrum inside it.
    OVRecord *currentRecord() const {
        float *spectrum = nullptr;
        EXPECT_EQ(function<decltype(OVGetEnergySpec)>("OVGetEnergySpec")(&spectrum, nullptr), 0);
        return reinterpret_cast<OVRecord *>(reinterpret_cast<char *>(spectrum) -
                                            offsetof(OVRecord, spectraUsed));
    }

private:
    HMODULE handle_;
};

TEST(Load, ALoadedLibraryHasACurrentRecord) {
    const LoadedLibrary library;
    EXPECT_TRUE(isZeroed(library.currentRecord()));
    OVWaveParameterSet parameters{};
    EXPECT_EQ(library.function<decltype(OVGetWavePar)>("OVGetWavePar")(&parameters), 0);
    EXPECT_EQ(+parameters.qualityFlags, OV_FLAG_NO_RESULT);
    EXPECT_EQ(library.function<decltype(OVProcessReturnInt)>("OVProcessReturnInt")(), 0);
}

TEST(Load, UnloadingReleasesTheRecord) {
    for (int i = 0; i < 5; ++i) {
        LoadedLibrary library;
        const OVRecord *const record = library.currentRecord();
        EXPECT_TRUE(isMemory(record));
        library.unload();
        EXPECT_FALSE(isMemory(record));
    }
}

TEST(Load, ThreadsComeAndGoWithoutATrace) {
    const LoadedLibrary library;
    OVRecord *const record = library.currentRecord();
    for (int i = 0; i < 3; ++i) {
        OVRecord *seen = nullptr;
        std::thread([&] { seen = library.currentRecord(); }).join();
        EXPECT_EQ(seen, record);
        EXPECT_EQ(library.currentRecord(), record);
        EXPECT_TRUE(isZeroed(record));
    }
}

TEST(Load, ARecordThatTheHostReleasedIsNotReleasedAgain) {
    LoadedLibrary library;
    OVRecord *const own = library.currentRecord();
    library.function<decltype(OVFreeVarPtr)>("OVFreeVarPtr")(own);
    OVRecord *const hosts = library.function<decltype(OVAllocateVarPtr)>("OVAllocateVarPtr")();
    ASSERT_NE(hosts, nullptr);
    library.unload();
    ASSERT_TRUE(isMemory(hosts));
    OVFreeVarPtr(hosts); // the C runtime is the system's: one heap for the library and this program
}

TEST(Load, UnloadingLeavesAHostsRecordAlone) {
    LoadedLibrary library;
    OVRecord *const hosts = library.function<decltype(OVAllocateVarPtr)>("OVAllocateVarPtr")();
    ASSERT_NE(hosts, nullptr);
    hosts->headerValueA = 1.5F;
    library.unload();
    ASSERT_TRUE(isMemory(hosts));
    EXPECT_EQ(hosts->headerValueA, 1.5F);
    OVFreeVarPtr(hosts);
}

} // namespace
