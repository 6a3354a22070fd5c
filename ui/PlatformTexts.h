// The widget library's own texts (buttons of alerts and dialogs, the folder chooser) in the
// interface language.
#pragma once

#include "base/LanguageBundle.h"

#include <memory>
#include <string>

namespace paperline {

// OK, Cancel and Close come from the bundle; everything else from the library's catalogue for the
// locale
// ("de_DE"), where that is installed. Takes the place of the language set before.
void setPlatformTexts(std::shared_ptr<const LanguageBundle> bundle, const std::string& locale);

} // namespace paperline
