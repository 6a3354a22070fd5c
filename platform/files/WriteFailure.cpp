#include "platform/files/WriteFailure.h"

#include <cerrno>
#include <system_error>

namespace paperline {

std::string writeFailureText(int errorNumber) {
    // "No such file or directory" would name the file that was to be created.
    if (errorNumber == ENOENT)
        return "the folder is gone";
    return std::generic_category().message(errorNumber);
}

} // namespace paperline
