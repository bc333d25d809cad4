#include "netcdf/hdf5_messages.hpp"

#include <H5Epublic.h>

namespace orvik {

void silenceHdf5InThisThread() {
    thread_local const herr_t kStatus = H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    static_cast<void>(kStatus); // on failure there are messages, and nothing else is wrong
}

} // namespace orvik
