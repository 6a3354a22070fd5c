// One language folder: the texts of its "Localizable.strings", looked up by key.
#pragma once

#include <map>
#include <memory>
#include <string>

namespace paperline {

class LanguageBundle {
public:
    // Nothing when the folder does not exist. A missing or damaged strings file is an empty bundle.
    static std::shared_ptr<const LanguageBundle> load(const std::string& folder);

    LanguageBundle(std::string folder, std::map<std::string, std::string> texts);

    // The text under the key, or the key itself.
    std::string localizedString(const std::string& key) const;
    const std::string& folder() const { return folder_; }
    const std::map<std::string, std::string>& texts() const { return texts_; }

private:
    std::string folder_;
    std::map<std::string, std::string> texts_;
};

// localizedString of the bundle, or the key without one.
std::string localizedString(const std::shared_ptr<const LanguageBundle>& bundle,
                            const std::string& key);

} // namespace paperline
