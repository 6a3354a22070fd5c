// main of every test that constructs the controller: an application on Qt's offscreen platform and
// places of the test's own, so that nothing of the user's is read or written.
#include "platform/files/Files.h"
#include "platform/places/Places.h"

#include <QApplication>

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    std::string folder = "/tmp/paperline-test-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        return 1;
    }
    const auto own = [&folder](const char* variable, const std::string& name) {
        const std::string path = folder + "/" + name;
        setenv(variable, path.c_str(), 1);
        return paperline::createFolderWithParents(path);
    };
    bool made = own("PAPERLINE_ROOT", "root") && own("PAPERLINE_SCRATCH", "scratch") &&
                own("HOME", "home") && own("XDG_DATA_HOME", "home/data") &&
                own("XDG_CACHE_HOME", "home/cache") && own("XDG_CONFIG_HOME", "home/config") &&
                own("XDG_RUNTIME_DIR", "run");
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    std::string error;
    made = made && paperline::chooseScratchRoot(paperline::ScratchKind::sharedTmp, error);
    if (!made) {
        std::fprintf(stderr, "test folders: %s\n", error.c_str());
        return 1;
    }
    int result = 0;
    {
        QApplication application(argc, argv);
        result = RUN_ALL_TESTS();
    }
    paperline::removePath(folder);
    return result;
}
