#include "controller/AppDelegate.h"

#include <QWidget>

#include <utility>

namespace paperline {

AppDelegate::AppDelegate(LaunchOptions options) : launchOptions_(std::move(options)) {}

AppDelegate::~AppDelegate() = default;

} // namespace paperline
