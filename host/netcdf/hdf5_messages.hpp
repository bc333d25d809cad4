// What the HDF5 library below netCDF says by itself.
#pragma once

namespace orvik {

// Of everything that does not succeed HDF5 writes a stack of messages to the terminal, for each thread anew; netCDF turns
// that off in the first thread only. What matters comes back as an error.
void silenceHdf5InThisThread();

} // namespace orvik
