#include "exports/current_record.hpp"
#include "frame/process.hpp"
#include "orvikbase/orvikbase.h"

extern "C" {

// True for a null record: the one `_ptr` operation that does not answer -1.
bool OVProcess_ptr(OVRecord *record) { return record == nullptr || ov::processBurst(*record); }

bool OVProcess(void) { return OVProcess_ptr(ov::currentRecord); }

int32_t OVProcessReturnInt_ptr(OVRecord *record) {
    if (record == nullptr) {
        return ov::kNullArgument;
    }
    return ov::processBurst(*record) ? 1 : 0;
}

int32_t OVProcessReturnInt(void) { return OVProcessReturnInt_ptr(ov::currentRecord); }

int32_t OVProcessReturnIntLV(void) { return OVProcessReturnInt(); }

bool VELTAWaveProcess_ptr(OVRecord *record, void *hook) {
    ov::processingHook = hook;
    return OVProcess_ptr(record);
}

bool VELTAWaveProcess(void *hook) { return VELTAWaveProcess_ptr(ov::currentRecord, hook); }

} // extern "C"
