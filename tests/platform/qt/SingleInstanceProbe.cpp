// A start of the application as far as its lock goes: says which one it is, and, as the first, that
// it was asked to the front, until its input ends.
#include "platform/qt/SingleInstance.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
    using paperline::SingleInstance;
    QCoreApplication application(argc, argv);
    SingleInstance instance(argc > 1 ? argv[1] : "");
    const auto say = [](const char* line) {
        std::puts(line);
        std::fflush(stdout);
    };
    switch (instance.start()) {
    case SingleInstance::Role::second:
        say("second");
        return 0;
    case SingleInstance::Role::unlocked:
        say("unlocked");
        return 0;
    case SingleInstance::Role::first:
        say("first");
    }
    instance.whenRaised([&say] { say("raised"); });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return application.exec();
}
