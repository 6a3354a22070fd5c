#include "platform/files/PathText.h"

#include <string_view>

namespace paperline {
namespace {

std::string_view trimmed(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string_view lastComponent(std::string_view path) {
    path = trimmed(path);
    if (path == "/")
        return path;
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// The position of the extension's dot, or npos. A dot at the start or at the end does not count.
size_t extensionDot(std::string_view component) {
    const size_t dot = component.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == component.size())
        return std::string_view::npos;
    return dot;
}

} // namespace

std::string withoutTrailingSlashes(const std::string& path) {
    return std::string(trimmed(path));
}

std::string lastPathComponent(const std::string& path) {
    return std::string(lastComponent(path));
}

std::string folderOfPath(const std::string& path) {
    const std::string_view whole = trimmed(path);
    const size_t slash = whole.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return slash == 0 ? "/" : std::string(trimmed(whole.substr(0, slash)));
}

std::string appendPathComponent(const std::string& path, const std::string& component) {
    if (path.empty())
        return component;
    const std::string_view folder = trimmed(path);
    const size_t start = component.find_first_not_of('/');
    if (start == std::string::npos)
        return std::string(folder);
    std::string joined(folder);
    if (joined.back() != '/')
        joined += '/';
    return joined.append(component, start);
}

std::string pathExtension(const std::string& path) {
    const std::string_view component = lastComponent(path);
    const size_t dot = extensionDot(component);
    return dot == std::string_view::npos ? std::string() : std::string(component.substr(dot + 1));
}

std::string withoutPathExtension(const std::string& path) {
    const std::string_view whole = trimmed(path);
    const std::string_view component = lastComponent(whole);
    const size_t dot = extensionDot(component);
    if (dot == std::string_view::npos)
        return std::string(whole);
    return std::string(whole.substr(0, whole.size() - component.size() + dot));
}

} // namespace paperline
