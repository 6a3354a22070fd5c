// The texts of one language, from "Localizable.strings" in its folder.
#pragma once

#include <map>
#include <memory>
#include <string>

namespace paperline {

class LanguageBundle {
public:
    // Null when the folder does not exist. Without a readable strings file the bundle is empty.
    static std::shared_ptr<const LanguageBundle> load(const std::string& folder);

    LanguageBundle(std::string folder, std::map<std::string, std::string> texts);

    // The text of the key, or the key itself.
    std::string localizedString(const std::string& key) const;
    const std::string& folder() const { return folder_; }
    const std::map<std::string, std::string>& texts() const { return texts_; }

private:
    std::string folder_;
    std::map<std::string, std::string> texts_;
};

// The same; the key itself if the bundle is null.
std::string localizedString(const std::shared_ptr<const LanguageBundle>& bundle,
                            const std::string& key);

} // namespace paperline
