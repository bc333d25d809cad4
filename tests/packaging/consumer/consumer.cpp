// A host in C++ as far as packaging goes: it includes, links, starts, and its calls reach the library.
#include <iostream>
#include <memory>

#include <orvikbase/orvikbase.h>

int main() {
    const std::unique_ptr<OVRecord, void (*)(OVRecord *)> record(OVAllocateVarPtr(), OVFreeVarPtr);
    char version[8] = {};
    OVGetOrvikBaseVer(version, sizeof version);
    OVWaveHeader header{};
    header.nSamples = 1000; // rounded down to a power of two
    if (record == nullptr || OVSetWaveHeader_ptr(record.get(), &header) != 1 || header.nSamples != 512) {
        return 1;
    }
    const int samples = header.nSamples;
    std::cout << "OrvikBase " << version << ", burst of " << samples << " samples\n";
    return 0;
}
