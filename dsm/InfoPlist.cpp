#include "dsm/InfoPlist.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace paperline::dsm {
namespace {

struct Tag {
    std::string_view name;
    bool closes = false; // </name>
    bool empty = false;  // <name/>
};

// Walks over the tags of an XML text. Every step moves forward, so that it ends with the text.
class TagReader {
public:
    explicit TagReader(std::string_view text) : text_(text) {}

    // The next element's tag; comments, instructions and declarations are passed over. Nothing at
    // the end or where the text is no XML. `between` is the text before the tag.
    std::optional<Tag> next(std::string_view& between) {
        const size_t start = position_;
        for (;;) {
            const size_t open = text_.find('<', position_);
            if (open == std::string_view::npos)
                return std::nullopt;
            const std::string_view rest = text_.substr(open);
            if (rest.starts_with("<!--")) {
                if (!skipPast("-->", open + 4))
                    return std::nullopt;
            } else if (rest.starts_with("<?")) {
                if (!skipPast("?>", open + 2))
                    return std::nullopt;
            } else if (rest.starts_with("<!")) {
                if (!skipDeclaration(open + 2))
                    return std::nullopt;
            } else {
                between = text_.substr(start, open - start);
                return element(open + 1);
            }
        }
    }

private:
    bool skipPast(std::string_view end, size_t from) {
        const size_t found = text_.find(end, from);
        if (found == std::string_view::npos)
            return false;
        position_ = found + end.size();
        return true;
    }

    bool skipDeclaration(size_t from) {
        int brackets = 0; // an internal subset may hold further declarations
        for (size_t at = from; at < text_.size(); ++at) {
            if (text_[at] == '[')
                ++brackets;
            else if (text_[at] == ']')
                --brackets;
            else if (text_[at] == '>' && brackets <= 0) {
                position_ = at + 1;
                return true;
            }
        }
        return false;
    }

    std::optional<Tag> element(size_t from) {
        Tag tag;
        size_t at = from;
        if (at < text_.size() && text_[at] == '/') {
            tag.closes = true;
            ++at;
        }
        const size_t end = text_.find('>', at);
        if (end == std::string_view::npos)
            return std::nullopt;
        std::string_view inside = text_.substr(at, end - at);
        if (inside.ends_with('/')) {
            tag.empty = true;
            inside.remove_suffix(1);
        }
        tag.name = inside.substr(0, inside.find_first_of(" \t\r\n"));
        position_ = end + 1;
        if (tag.name.empty() || (tag.closes && tag.empty))
            return std::nullopt;
        return tag;
    }

    std::string_view text_;
    size_t position_ = 0;
};

std::string withoutEntities(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, char>, 5> entities{
        {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    std::string result;
    for (size_t at = 0; at < text.size();) {
        bool replaced = false;
        for (const auto& [entity, character] : entities) {
            if (!replaced && text.substr(at).starts_with(entity)) {
                result += character;
                at += entity.size();
                replaced = true;
            }
        }
        if (!replaced)
            result += text[at++];
    }
    return result;
}

// The text up to the closing tag of the name; nothing when another tag comes first.
std::optional<std::string> textUntilClosed(TagReader& reader, std::string_view name) {
    std::string_view text;
    const std::optional<Tag> tag = reader.next(text);
    if (!tag || !tag->closes || tag->name != name)
        return std::nullopt;
    return withoutEntities(text);
}

bool skipContainer(TagReader& reader) {
    std::string_view unused;
    for (uint64_t depth = 1; depth > 0;) {
        const std::optional<Tag> tag = reader.next(unused);
        if (!tag)
            return false;
        if (tag->closes)
            --depth;
        else if (!tag->empty)
            ++depth;
    }
    return true;
}

// A value as text: what stands in <string>, <integer> and their like, "true" or "false", and
// nothing for the text of a container. The outer optional is empty when the text is damaged.
std::optional<std::optional<std::string>> readValue(TagReader& reader) {
    std::string_view unused;
    const std::optional<Tag> tag = reader.next(unused);
    if (!tag || tag->closes)
        return std::nullopt;
    const bool boolean = tag->name == "true" || tag->name == "false";
    if (tag->empty)
        return std::optional<std::string>(boolean ? std::string(tag->name) : std::string());
    if (tag->name == "dict" || tag->name == "array") {
        if (!skipContainer(reader))
            return std::nullopt;
        return std::optional<std::optional<std::string>>(std::in_place, std::nullopt);
    }
    std::optional<std::string> text = textUntilClosed(reader, tag->name);
    if (!text)
        return std::nullopt;
    return boolean ? std::string(tag->name) : std::move(text);
}

bool saysYes(const std::string& text) {
    return text == "true" || text == "YES" || text == "1";
}

bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.size() < 256 &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

} // namespace

std::optional<BundleInfo> parseBundleInfo(std::string_view xml) {
    TagReader reader(xml);
    std::string_view unused;
    std::optional<Tag> tag = reader.next(unused);
    if (tag && tag->name == "plist" && !tag->closes)
        tag = reader.next(unused);
    if (!tag || tag->name != "dict" || tag->closes || tag->empty)
        return std::nullopt;
    BundleInfo info;
    for (;;) {
        tag = reader.next(unused);
        if (tag && tag->closes && tag->name == "dict")
            break;
        if (!tag || tag->closes || tag->empty || tag->name != "key")
            return std::nullopt;
        const std::optional<std::string> key = textUntilClosed(reader, "key");
        if (!key)
            return std::nullopt;
        const std::optional<std::optional<std::string>> value = readValue(reader);
        if (!value)
            return std::nullopt;
        if (*key == "CFBundleExecutable" && *value)
            info.executable = **value;
        else if (*key == "PaperlineFallback" && *value)
            info.fallback = saysYes(**value);
    }
    if (!isPlainFileName(info.executable))
        return std::nullopt;
    return info;
}

std::optional<BundleInfo> readBundleInfo(const std::string& path) {
    // Not blocking: a pipe of that name must not hold up the program.
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return std::nullopt;
    struct stat status {};
    std::optional<BundleInfo> info;
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size >= 0 &&
        static_cast<uint64_t>(status.st_size) <= largestInfoPlistBytes) {
        std::string text(static_cast<size_t>(status.st_size), '\0');
        size_t filled = 0;
        ssize_t count = 1;
        while (filled < text.size() && count > 0) {
            count = ::read(file, text.data() + filled, text.size() - filled);
            filled += count > 0 ? static_cast<size_t>(count) : 0;
        }
        if (filled == text.size())
            info = parseBundleInfo(text);
    }
    ::close(file);
    return info;
}

} // namespace paperline::dsm
