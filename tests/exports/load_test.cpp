// The shared library as a host loads and unloads it.
#include <cstddef>
#include <cstdio>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "frame/record.hpp"
#include "orvikbase/orvikbase.h"

namespace {

class LoadedLibrary {
public:
    LoadedLibrary() : handle_(dlopen(ORVIK_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(handle_, nullptr) << dlerror();
    }
    ~LoadedLibrary() {
        if (handle_ != nullptr) {
            EXPECT_EQ(dlclose(handle_), 0);
        }
    }
    LoadedLibrary(const LoadedLibrary &) = delete;
    LoadedLibrary &operator=(const LoadedLibrary &) = delete;

    template <class Function> Function *function(const char *name) const {
        void *const address = dlsym(handle_, name);
        EXPECT_NE(address, nullptr) << name;
        return reinterpret_cast<Function *>(address);
    }

    // Address of the library's own current record, by way of the spectrum inside it.
    OVRecord *currentRecord() const {
        float *spectrum = nullptr;
        EXPECT_EQ(function<decltype(OVGetEnergySpec)>("OVGetEnergySpec")(&spectrum, nullptr), 0);
        return reinterpret_cast<OVRecord *>(reinterpret_cast<char *>(spectrum) -
                                            offsetof(OVRecord, spectraUsed));
    }

private:
    void *handle_;
};

// Address space of this process [bytes].
std::size_t addressSpace() {
    std::FILE *const file = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    if (file != nullptr) {
        EXPECT_EQ(std::fscanf(file, "%lu", &pages), 1);
        std::fclose(file);
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(Load, ALoadedLibraryHasACurrentRecord) {
    const LoadedLibrary library;
    OVWaveParameterSet parameters{};
    EXPECT_EQ(library.function<decltype(OVGetWavePar)>("OVGetWavePar")(&parameters), 0);
    EXPECT_EQ(+parameters.qualityFlags, OV_FLAG_NO_RESULT);
    EXPECT_EQ(library.function<decltype(OVProcessReturnInt)>("OVProcessReturnInt")(), 0);
}

// A leak would grow the process by 20 records of 69 MB; an allocator that delays releases holds a few of them.
TEST(Load, UnloadingReleasesTheRecord) {
    { const LoadedLibrary warmUp; }
    const std::size_t before = addressSpace();
    for (int i = 0; i < 20; ++i) {
        const LoadedLibrary library;
    }
    const std::size_t after = addressSpace();
    EXPECT_LT(after, before + 10 * sizeof(OVRecord));
}

TEST(Load, ARecordThatTheHostReleasedIsNotReleasedAgain) {
    const LoadedLibrary library;
    OVRecord *const own = library.currentRecord();
    library.function<decltype(OVFreeVarPtr)>("OVFreeVarPtr")(own);
    // What the allocator gives out next may lie where the record was; unloading must leave it alone.
    OVRecord *const hosts = library.function<decltype(OVAllocateVarPtr)>("OVAllocateVarPtr")();
    ASSERT_NE(hosts, nullptr);
    library.function<decltype(OVFreeVarPtr)>("OVFreeVarPtr")(hosts);
}

TEST(Load, UnloadingLeavesAHostsRecordAlone) {
    OVRecord *hosts = nullptr;
    {
        const LoadedLibrary library;
        hosts = library.function<decltype(OVAllocateVarPtr)>("OVAllocateVarPtr")();
        ASSERT_NE(hosts, nullptr);
        hosts->headerValueA = 1.5F;
    }
    EXPECT_EQ(hosts->headerValueA, 1.5F);
    OVFreeVarPtr(hosts);
}

} // namespace
