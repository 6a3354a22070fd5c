#include "platform/desktop/Desktop.h"

namespace paperline {

Desktop& desktop() {
    static Desktop instance{
        [](const std::string&, const std::string&) { return std::optional<std::string>(); },
        [](const std::string&) {},
        [](const std::string&) {},
        [] {}};
    return instance;
}

} // namespace paperline
