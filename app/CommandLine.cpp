#include "app/CommandLine.h"

#include "base/FileFormats.h"
#include "platform/host/Utf.h"

#include <charconv>

namespace paperline {

static_assert(hungSourceTimeoutSeconds == 300, "usageText names it");
const char* const usageText =
    "Usage: paperline                      open the window\n"
    "       paperline scan [options]       scan everything the source has\n"
    "       paperline sources              list the data sources, one name per line\n"
    "       paperline sources --options NAME\n"
    "                                      list the options of a source with their ranges\n"
    "       paperline --help | --version\n"
    "\n"
    "Options of scan:\n"
    "  --source NAME          the data source (default: the one used last, else the first)\n"
    "  --format FORMAT        bmp, jpg, gif, pdf, mpdf, tif, mtif or png (default: the one used "
    "last)\n"
    "  --folder DIR           the folder for the pages (default: the one used last)\n"
    "  --name TEMPLATE        start of the file names; %YYYYMMDD, %HHNNSS and the like are filled "
    "in\n"
    "  --option NAME=VALUE    set an option of the source for this scan only (may be repeated)\n"
    "  --timeout SECONDS      give up on a source that is silent for this long (default: 300)\n"
    "  --json                 one JSON object per file, then one with the totals\n"
    "\n"
    "Saved paths go to standard output, one per line, as they are saved; messages go to standard "
    "error.\n"
    "Exit status: 0 saved, 1 nothing or not all saved, 2 usage, 3 no such source, 4 the source did "
    "not\n"
    "open, 5 the source hung.\n";

namespace {

// The words one by one; "--name value" and "--name=value" are the same.
class Words {
public:
    explicit Words(std::span<const std::string> words) : words_(words) {}

    bool next() {
        if (position_ >= words_.size())
            return false;
        word_ = words_[position_++];
        value_.reset();
        const size_t equals = word_.find('=');
        if (word_.starts_with("--") && equals != std::string::npos) {
            value_ = word_.substr(equals + 1);
            word_.resize(equals);
        }
        return true;
    }
    const std::string& word() const { return word_; }
    bool hasInlineValue() const { return value_.has_value(); }
    std::optional<std::string> value() {
        if (value_)
            return value_;
        if (position_ >= words_.size())
            return std::nullopt;
        return words_[position_++];
    }

private:
    std::span<const std::string> words_;
    size_t position_ = 0;
    std::string word_;
    std::optional<std::string> value_;
};

std::optional<int32_t> formatNamed(const std::string& name) {
    for (const FileFormat& format : fileFormats)
        if (name == format.commandName)
            return format.code;
    return std::nullopt;
}

std::optional<int> positiveNumber(const std::string& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0)
        return std::nullopt;
    return number;
}

// Stores the option. Returns what is wrong with it, or nothing.
std::string
takeScanOption(const std::string& option, const std::string& value, ScanRequest& request) {
    if (option == "--source") {
        request.source = value;
    } else if (option == "--format") {
        request.fileFormat = formatNamed(value);
        if (!request.fileFormat)
            return "unknown format '" + value + "'";
    } else if (option == "--folder") {
        if (value.empty())
            return "--folder needs a folder";
        request.folder = value;
    } else if (option == "--name") {
        if (value.empty() || value.find('/') != std::string::npos)
            return "a name is not empty and holds no '/'";
        request.name = value;
    } else if (option == "--option") {
        if (value.find('=') == std::string::npos || value.front() == '=' ||
            value.find('\n') != std::string::npos)
            return "--option needs NAME=VALUE";
        request.options.push_back(value);
    } else if (option == "--timeout") {
        const std::optional<int> seconds = positiveNumber(value);
        if (!seconds)
            return "--timeout needs a number of seconds";
        request.timeoutSeconds = *seconds;
    } else {
        return "unknown option '" + option + "'";
    }
    return {};
}

CommandLine usageError(const std::string& error) {
    CommandLine line;
    line.command = Command::usageError;
    line.error = error;
    return line;
}

// The option that a word is or belongs to.
std::string optionOf(std::span<const std::string> arguments, size_t position) {
    for (const size_t place : {position, position - 1}) {
        const std::string name = arguments[place].substr(0, arguments[place].find('='));
        if (name.starts_with("--") && isValidUtf8(name))
            return name;
        if (position == 0)
            break;
    }
    return "a word";
}

// Qt would change other bytes in a path or a name.
std::string complaintAboutEncoding(std::span<const std::string> arguments) {
    for (size_t position = 0; position < arguments.size(); ++position)
        if (!isValidUtf8(arguments[position]))
            return optionOf(arguments, position) + " is not valid UTF-8";
    return {};
}

CommandLine parseScan(Words words) {
    CommandLine line;
    line.command = Command::scan;
    while (words.next()) {
        const std::string option = words.word();
        if (option == "--help")
            return {.command = Command::help, .scan = {}, .optionsOf = {}, .error = {}};
        if (option == "--json" && !words.hasInlineValue()) {
            line.scan.json = true;
            continue;
        }
        if (!option.starts_with("--"))
            return usageError("unexpected word '" + option + "'");
        const std::optional<std::string> value = words.value();
        if (!value)
            return usageError(option + " needs a value");
        if (const std::string error = takeScanOption(option, *value, line.scan); !error.empty())
            return usageError(error);
    }
    return line;
}

CommandLine parseSources(Words words) {
    CommandLine line;
    line.command = Command::listSources;
    while (words.next()) {
        if (words.word() == "--help")
            return {.command = Command::help, .scan = {}, .optionsOf = {}, .error = {}};
        if (words.word() != "--options")
            return usageError("unexpected word '" + words.word() + "'");
        const std::optional<std::string> name = words.value();
        if (!name || name->empty())
            return usageError("--options needs the name of a source");
        line.command = Command::listOptions;
        line.optionsOf = *name;
    }
    return line;
}

} // namespace

CommandLine parseCommandLine(std::span<const std::string> arguments) {
    if (arguments.empty())
        return {};
    if (const std::string complaint = complaintAboutEncoding(arguments); !complaint.empty())
        return usageError(complaint);
    const std::string& first = arguments.front();
    const Words rest(arguments.subspan(1));
    if (first == "scan")
        return parseScan(rest);
    if (first == "sources")
        return parseSources(rest);
    CommandLine line;
    if (first == "--help" || first == "-h" || first == "help")
        line.command = Command::help;
    else if (first == "--version")
        line.command = Command::version;
    else
        return usageError("unknown command '" + first + "'");
    return line;
}

} // namespace paperline
