// Paths as text; the file system is not asked.
#pragma once

#include <string>

namespace paperline {

std::string withoutTrailingSlashes(const std::string& path); // "/" stays
std::string lastPathComponent(const std::string& path);      // "/a/b/" gives "b"; "/" gives "/"
std::string folderOfPath(const std::string& path);           // "/a/b" gives "/a"; "a" gives ""
std::string appendPathComponent(const std::string& path,
                                const std::string& component); // one "/" between
std::string pathExtension(const std::string& path); // "ds" of "x.ds"; "" when there is none
std::string withoutPathExtension(const std::string& path);

} // namespace paperline
