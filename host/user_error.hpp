// Errors that the user can mend: the message names the file, variable or option and says what to do.
#pragma once

#include <stdexcept>

namespace orvik {

class UserError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What the user typed cannot be meant: the command line, not a file, has to change.
class UsageError : public UserError {
public:
    using UserError::UserError;
};

// The results cannot be written: there is no point in going on.
class WriteError : public UserError {
public:
    using UserError::UserError;
};

// The user stopped a run that can be resumed.
class Stopped : public UserError {
public:
    using UserError::UserError;
};

} // namespace orvik
