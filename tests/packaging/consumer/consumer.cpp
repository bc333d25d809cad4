// A host in C++ as far as packaging goes: it includes, links, starts, and its calls reach the library.
#include <iostream>

#include <orvikbase/orvikbase.hpp>

int main() {
    orvikbase::Record record;
    const int samples = record.openBurst({.samples = 1000}); // rounded down to a power of two
    std::cout << "OrvikBase " << orvikbase::version() << ", burst of " << samples << " samples\n";
    return samples == 512 ? 0 : 1;
}
