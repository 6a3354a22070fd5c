// Qt's own texts (buttons of dialogs, the folder chooser) in the interface language.
#pragma once

#include "base/LanguageBundle.h"

#include <memory>
#include <string>

namespace paperline {

// OK, Cancel and Close come from the bundle, everything else from Qt's catalogue for the locale
// ("de_DE"), if it is installed.
void setPlatformTexts(std::shared_ptr<const LanguageBundle> bundle, const std::string& locale);

} // namespace paperline
