// Records, the current record, version, and what happens when the library is loaded and unloaded.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#endif

#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"

namespace ov {

WaveVariables *currentRecord = nullptr;
void *processingHook = nullptr;

namespace {

constexpr char kVersion[] = "4.15";

// The record that loading allocated; unloading releases it unless the host has done so.
WaveVariables *recordOfLoad = nullptr;

void onLoad() { recordOfLoad = OVAllocateVarPtr(); }

void onUnload() { OVFreeVarPtr(recordOfLoad); }

// Windows tells a dynamic library through its entry point, below, and a static one nothing: its host
// allocates a record.
#if !defined(_WIN32)
[[gnu::constructor]] void loaded() { onLoad(); }
[[gnu::destructor]] void unloaded() { onUnload(); }
#endif

} // namespace
} // namespace ov

extern "C" {

OVRecord *OVAllocateVarPtr(void) {
    // Zero pages straight from the system: a record costs memory only where a burst touches it.
    ov::currentRecord = static_cast<OVRecord *>(std::calloc(1, sizeof(OVRecord)));
    return ov::currentRecord;
}

void OVFreeVarPtr(OVRecord *record) {
    if (record == ov::recordOfLoad) {
        ov::recordOfLoad = nullptr;
    }
    std::free(record);
}

void VELTASetWaveVariablesPointer(OVRecord *record) { ov::currentRecord = record; }

uint64_t VELTAGetWaveVariableNbytes(void) { return sizeof(OVRecord); }

int32_t OVGetOrvikBaseVer(char *buffer, int16_t length) {
    if (buffer == nullptr) {
        return ov::kNullArgument;
    }
    if (length > 0) {
        const auto wanted = static_cast<std::size_t>(length);
        std::memset(buffer, 0, wanted);
        std::memcpy(buffer, ov::kVersion, std::min(wanted, sizeof ov::kVersion - 1));
    }
    return 0;
}

#if defined(_WIN32)
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        ov::onLoad();
    } else if (reason == DLL_PROCESS_DETACH) {
        ov::onUnload();
    }
    return TRUE;
}
#endif

} // extern "C"
