#include "TestPlaces.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace paperline::test {
namespace fs = std::filesystem;

TestPlaces::TestPlaces() {
    ::setenv("PAPERLINE_ROOT", (folder_ / "root").c_str(), 1);
    ::setenv("HOME", (folder_ / "home").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    ::setenv("PAPERLINE_DSM_LOG", (folder_ / "log").c_str(), 1);
    ::unsetenv("PAPERLINE_SOFTWARE_SCANNER");
    ::unsetenv("PAPERLINE_DSM");
    fs::create_directories(managerFile().parent_path());
    fs::copy_file(TEST_MANAGER_FILE, managerFile());
}

fs::path TestPlaces::systemBundles() const {
    return folder_ / "root/Library/Image Capture/TWAIN Data Sources";
}

fs::path TestPlaces::userBundles() const {
    return folder_ / "data/paperline/TWAIN Data Sources";
}

fs::path TestPlaces::plainSources() const {
    return folder_ / "root/usr/local/lib/twain";
}

fs::path TestPlaces::managerFile() const {
    return folder_ / "tree/Paperline.app/Contents/Frameworks/libpaperline-dsm.so";
}

void TestPlaces::addBundle(const fs::path& bundleFolder,
                           const std::string& name,
                           const std::string& sourceFile,
                           const std::string& moreEntries) const {
    const fs::path contents = bundleFolder / (name + ".ds") / "Versions/A";
    writeText(contents / "Resources/Info.plist", infoPlist("source", moreEntries));
    fs::copy_file(sourceFile, contents / "source");
}

void TestPlaces::addPlain(const std::string& relativeName, const std::string& sourceFile) const {
    const fs::path file = plainSources() / relativeName;
    fs::create_directories(file.parent_path());
    fs::copy_file(sourceFile, file);
}

std::string TestPlaces::log() const {
    return readText(folder_ / "log");
}

void writeText(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::string readText(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string infoPlist(const std::string& executable, const std::string& moreEntries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n<dict>\n"
           "\t<key>CFBundleExecutable</key>\n\t<string>" +
           executable + "</string>\n" + moreEntries + "</dict>\n</plist>\n";
}

} // namespace paperline::test
