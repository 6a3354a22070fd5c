#include "sources/framework/SourceLanguage.h"

#include "platform/files/FileContent.h"
#include "sources/framework/OptionLines.h"

#include <charconv>

namespace paperline::sources {

namespace {

// Goes from tag to tag. Markup inside values is escaped, so that every "<" begins a tag.
class TagReader {
public:
    explicit TagReader(std::string_view xml) : rest_(xml) {}

    bool next() {
        const size_t begin = rest_.find('<');
        if (begin == std::string_view::npos)
            return false;
        rest_.remove_prefix(begin + 1);
        const bool isComment = rest_.starts_with("!--");
        const size_t end = rest_.find(isComment ? "-->" : ">");
        if (end == std::string_view::npos)
            return false;
        name_ = rest_.substr(0, end);
        rest_.remove_prefix(end + (isComment ? 3 : 1));
        return true;
    }
    std::string_view name() const { return name_; }
    // Up to the next tag.
    std::string_view text() const { return rest_.substr(0, rest_.find('<')); }

private:
    std::string_view rest_;
    std::string_view name_;
};

int32_t numberIn(std::string_view text) {
    int32_t number = 0;
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin != std::string_view::npos)
        std::from_chars(text.data() + begin, text.data() + text.size(), number);
    return number;
}

constexpr int profileDepth = 2; // containers around the entries of "Default"

} // namespace

int32_t languageOfPropertyList(std::string_view xml) {
    TagReader tags(xml);
    std::string_view key;
    int depth = 0;
    bool inProfile = false;
    while (tags.next()) {
        const std::string_view tag = tags.name();
        if (tag == "key") {
            key = tags.text();
        } else if (tag == "dict" || tag == "array") {
            ++depth;
            if (depth == profileDepth)
                inProfile = tag == "dict" && key == "Default";
        } else if (tag == "/dict" || tag == "/array") {
            --depth;
            inProfile = inProfile && depth >= profileDepth;
        } else if (tag == "integer" && depth == profileDepth && inProfile && key == "Language") {
            return numberIn(tags.text());
        }
    }
    return 0;
}

int32_t languageOfBundle(const std::string& bundlePath) {
    const auto text =
        readTextFile(bundlePath + "/Versions/A/cvscan.plist", maximumConfigurationBytes);
    return text ? languageOfPropertyList(*text) : 0;
}

} // namespace paperline::sources
