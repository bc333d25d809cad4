/* A host in C as far as packaging goes: it includes, links, starts, and its calls reach the library. */
#include <stdio.h>

#include <orvikbase/orvikbase.h>

int main(void) {
    char version[8] = "";
    OVRecord *record = OVAllocateVarPtr();
    OVWaveHeader header = {0};
    if (record == NULL) {
        return 1;
    }
    OVGetOrvikBaseVer(version, (int16_t)sizeof version);
    header.nSamples = 1000; /* rounded down to a power of two */
    if (OVSetWaveHeader_ptr(record, &header) != 1 || header.nSamples != 512) {
        return 1;
    }
    OVFreeVarPtr(record);
    printf("OrvikBase %s, burst of %d samples\n", version, (int)header.nSamples);
    return 0;
}
