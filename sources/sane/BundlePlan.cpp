#include "sources/sane/BundlePlan.h"

#include "platform/host/Utf.h"
#include "sources/framework/LocaleFreeText.h"

#include <algorithm>

namespace paperline::sources {

namespace {

constexpr int highestNumber = 10000;

// One blank for each run of blanks and control characters, none at the ends.
std::string tidied(const std::string& text) {
    std::string result;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code > ' ' && code != 0x7F)
            result += character;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
    }
    if (result.ends_with(' '))
        result.pop_back();
    return result;
}

std::string cutTo(const std::string& text, size_t bytes) {
    return tidied(std::string(wholeCharacters(text, bytes)));
}

bool isNameOf(const std::string& product, const std::string& baseName) {
    for (int number = 1; number < highestNumber; ++number) {
        const std::string name = numberedProductName(baseName, number);
        if (name == product)
            return true;
        if (name.size() > product.size() && number > 1)
            return false;
    }
    return false;
}

// The bundles and names that are not assigned yet.
class Planner {
public:
    Planner(const std::vector<KnownBundle>& known, const std::set<std::string>& takenFolders)
        : free_(known), takenFolders_(takenFolders) {}

    // Assigns the free bundle with the lowest name among those that the test accepts.
    template <typename Test> bool adopt(KnownBundle& bundle, Test test) {
        auto best = free_.end();
        for (auto candidate = free_.begin(); candidate != free_.end(); ++candidate)
            if (test(*candidate) && (best == free_.end() || lengthThenText(*candidate, *best)))
                best = candidate;
        if (best == free_.end())
            return false;
        bundle.folder = best->folder;
        bundle.product = best->product;
        reserve(bundle);
        free_.erase(best);
        return true;
    }

    void reserve(const KnownBundle& bundle) {
        products_.insert(bundle.product);
        takenFolders_.insert(bundle.folder);
    }

    void giveNewName(KnownBundle& bundle, const std::string& baseName) {
        for (int number = 1; number < highestNumber; ++number) {
            bundle.product = numberedProductName(baseName, number);
            bundle.folder = bundleFolderName(bundle.product);
            if (products_.count(bundle.product) == 0 && takenFolders_.count(bundle.folder) == 0)
                break;
        }
        reserve(bundle);
    }

    // Keeps the free bundles that the test accepts for no device.
    template <typename Test> std::vector<KnownBundle> setAside(Test test) {
        std::vector<KnownBundle> kept;
        for (const KnownBundle& bundle : free_)
            if (test(bundle)) {
                kept.push_back(bundle);
                reserve(bundle);
            }
        std::erase_if(free_, test);
        return kept;
    }

    const std::vector<KnownBundle>& left() const { return free_; }

private:
    static bool lengthThenText(const KnownBundle& one, const KnownBundle& other) {
        return std::pair(one.product.size(), one.product) <
               std::pair(other.product.size(), other.product);
    }

    std::vector<KnownBundle> free_; // known, and not assigned
    std::set<std::string> takenFolders_;
    std::set<std::string> products_;
};

} // namespace

std::string productBaseName(const SaneDeviceEntry& device) {
    const std::string vendor = tidied(device.vendor);
    const std::string model = tidied(device.model);
    const bool modelSaysBoth = model.size() > vendor.size() && model[vendor.size()] == ' ' &&
                               equalsIgnoringCase(model.substr(0, vendor.size()), vendor);
    const std::string name = vendor.empty() || modelSaysBoth ? model : vendor + " " + model;
    const std::string fitting = cutTo(name, maximumProductBytes);
    return fitting.empty() ? "Scanner" : fitting;
}

std::string numberedProductName(const std::string& baseName, int number) {
    if (number <= 1)
        return baseName;
    const std::string ending = " " + std::to_string(number);
    return cutTo(baseName, maximumProductBytes - ending.size()) + ending;
}

std::string bundleFolderName(const std::string& product) {
    std::string name = product;
    std::replace(name.begin(), name.end(), '/', '_');
    if (name.starts_with('.'))
        name.front() = '_';
    return name + ".ds";
}

std::string backendOfDevice(const std::string& device) {
    return device.substr(0, device.find(':'));
}

BundlePlan planBundles(const std::vector<KnownBundle>& known,
                       const std::set<std::string>& takenFolders,
                       const std::vector<SaneDeviceEntry>& devices,
                       const std::set<std::string>& failedBackends) {
    Planner planner(known, takenFolders);
    BundlePlan plan;
    std::vector<bool> placed(devices.size(), false);
    for (const SaneDeviceEntry& device : devices)
        plan.bundles.push_back({{}, {}, device.name});
    const auto placeAll = [&](auto test) {
        for (size_t i = 0; i < devices.size(); ++i) {
            const std::string baseName = productBaseName(devices[i]);
            placed[i] = placed[i] || planner.adopt(plan.bundles[i], [&](const KnownBundle& bundle) {
                return isNameOf(bundle.product, baseName) && test(bundle, devices[i]);
            });
        }
    };
    placeAll([](const KnownBundle& bundle, const SaneDeviceEntry& device) {
        return bundle.device == device.name;
    });
    const std::vector<KnownBundle> kept = planner.setAside([&](const KnownBundle& bundle) {
        return failedBackends.count(backendOfDevice(bundle.device)) != 0;
    });
    placeAll([](const KnownBundle&, const SaneDeviceEntry&) { return true; });
    for (size_t i = 0; i < devices.size(); ++i)
        if (!placed[i])
            planner.giveNewName(plan.bundles[i], productBaseName(devices[i]));
    plan.bundles.insert(plan.bundles.end(), kept.begin(), kept.end());
    plan.obsolete = planner.left();
    return plan;
}

} // namespace paperline::sources
