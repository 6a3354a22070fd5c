#include "sources/software/SoftwareOptions.h"

#include "sources/framework/LocaleFreeText.h"

#include <algorithm>
#include <cmath>

namespace paperline::sources {

const std::vector<std::string>& sourceNames() {
    static const std::vector<std::string> names{"Flatbed", "Automatic Document Feeder"};
    return names;
}

const std::vector<std::string>& modeNames() {
    static const std::vector<std::string> names{"Lineart", "Gray", "Color"};
    return names;
}

OptionDescriptor textOption(const char* name, const char* title, const std::string& value) {
    OptionDescriptor option;
    option.name = name;
    option.title = title;
    option.value = value;
    return option;
}

OptionDescriptor choiceOption(const char* name,
                              const char* title,
                              const std::string& value,
                              const std::vector<std::string>& choices) {
    OptionDescriptor option = textOption(name, title, value);
    option.choices = choices;
    return option;
}

OptionDescriptor numberOption(const OptionName& name, double value, const NumberRange& range) {
    OptionDescriptor option = textOption(name.name, name.title, numberText(value));
    option.kind = range.step == 1 ? OptionKind::integer : OptionKind::fixed;
    option.unit = name.unit;
    option.hasRange = true;
    option.minimum = range.minimum;
    option.maximum = range.maximum;
    option.step = range.step;
    return option;
}

bool takeChoice(const std::string& text,
                const std::vector<std::string>& choices,
                std::string& value) {
    if (std::find(choices.begin(), choices.end(), text) == choices.end())
        return false;
    value = text;
    return true;
}

bool takeNumber(const std::string& text, const NumberRange& range, double& value) {
    const std::optional<double> number = numberFromText(text);
    if (!number || *number < range.minimum || *number > range.maximum)
        return false;
    value = *number;
    return true;
}

bool takeWhole(const std::string& text, const NumberRange& range, int& value) {
    double number = 0;
    if (!takeNumber(text, range, number) || number != std::floor(number))
        return false;
    value = static_cast<int>(number);
    return true;
}

} // namespace paperline::sources
