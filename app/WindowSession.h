// The application with its window, from start to end.
#pragma once

namespace paperline {

int runWindowSession(int& argc, char** argv);

} // namespace paperline
