// The application with its window, from start to end.
#pragma once

namespace paperline {

struct LaunchOptions;

int runWindowSession(int& argc, char** argv, const LaunchOptions& options);

} // namespace paperline
