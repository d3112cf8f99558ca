#include "platform/path.h"

#include <unistd.h>

#include <climits>
#include <vector>

namespace ODF::platform {

std::string Path::name() const {
    const auto slash = utf8_.find_last_of("/\\");
    return slash == std::string::npos ? utf8_ : utf8_.substr(slash + 1);
}

std::string Path::stem() const {
    std::string result = name();
    const auto dot = result.rfind('.');
    if (dot != std::string::npos) result.resize(dot);
    return result;
}

std::string Path::extension() const {
    const std::string file = name();
    const auto dot = file.rfind('.');
    return dot == std::string::npos ? std::string() : file.substr(dot);
}

Path Path::parent() const {
    const auto last = utf8_.find_last_not_of('/');
    if (last == std::string::npos) return utf8_.empty() ? Path(".") : Path("/");
    const auto slash = utf8_.rfind('/', last);
    if (slash == std::string::npos) return ".";
    const auto end = utf8_.find_last_not_of('/', slash);
    return end == std::string::npos ? Path("/") : Path(utf8_.substr(0, end + 1));
}

Path operator/(const Path& folder, const Path& relative) {
    std::string below = relative.utf8();
    for (char& unit : below)
        if (unit == '\\') unit = '/';
    std::string result = folder.utf8();
    if (result.empty()) return below;
    while (result.size() > 1 && (result.back() == '/' || result.back() == '\\'))
        result.pop_back();
    if (result.back() != '/') result += '/';
    const auto start = below.find_first_not_of('/');
    if (start != std::string::npos) result.append(below, start);
    return result;
}

Path Absolute(const Path& path) {
    std::string whole = path.utf8();
    if (whole.empty() || whole.front() != '/') {
        std::vector<char> folder(PATH_MAX);
        if (getcwd(folder.data(), folder.size())) whole = std::string(folder.data()) + '/' + whole;
    }
    std::string result;
    for (std::size_t start = 0; start < whole.size();) {
        auto end = whole.find('/', start);
        if (end == std::string::npos) end = whole.size();
        const std::string_view step(whole.data() + start, end - start);
        if (step == "..")
            result.resize(result.rfind('/') == std::string::npos ? 0 : result.rfind('/'));
        else if (!step.empty() && step != ".")
            result.append("/").append(step);
        start = end + 1;
    }
    return result.empty() ? Path("/") : Path(std::move(result));
}

} // namespace ODF::platform
