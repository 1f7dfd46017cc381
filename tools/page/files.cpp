#include "files.h"

#include <glib.h>

#include <cstddef>
#include <filesystem>
#include <string_view>

#include "base/file.h"

namespace fs = std::filesystem;

namespace page {
namespace {

constexpr size_t kLargestFile = size_t{256} << 20;
constexpr std::string_view kComment = "<!--";
constexpr std::string_view kCommentEnd = "-->";

bool isHidden(const std::string& path) {
    return ("/" + path).find("/.") != std::string::npos;
}

bool begins(std::string_view text, std::string_view lowerCaseWord) {
    return text.size() >= lowerCaseWord.size() &&
           g_ascii_strncasecmp(text.data(), lowerCaseWord.data(), lowerCaseWord.size()) == 0;
}

bool isTag(std::string_view text, std::string_view lowerCaseTag) {
    return begins(text, lowerCaseTag) && text.size() > lowerCaseTag.size() &&
           !g_ascii_isalnum(text[lowerCaseTag.size()]);
}

// Behind the tag that begins there.
size_t endOfTag(std::string_view document, size_t at) {
    for (char quote = '\0'; at < document.size(); ++at) {
        const char character = document[at];
        if (quote == '\0' && character == '>') {
            return at + 1;
        }
        if (quote == character) {
            quote = '\0';
        } else if (quote == '\0' && (character == '"' || character == '\'')) {
            quote = character;
        }
    }
    return document.size();
}

// Behind <head>; where there is none, behind the doctype, or at the start.
size_t placeOf(std::string_view document) {
    size_t doctypeEnd = 0;
    for (size_t at = 0; (at = document.find('<', at)) != std::string_view::npos;) {
        const std::string_view rest = document.substr(at);
        if (begins(rest, kComment)) {
            const size_t end = document.find(kCommentEnd, at + kComment.size());
            at = end == std::string_view::npos ? document.size() : end + kCommentEnd.size();
            continue;
        }
        const size_t end = endOfTag(document, at);
        if (isTag(rest, "<head")) {
            return end;
        }
        if (isTag(rest, "<!doctype")) {
            doctypeEnd = end;
        } else if (!isTag(rest, "<html") && !begins(rest, "<?")) {
            break;
        }
        at = end;
    }
    return doctypeEnd;
}

}  // namespace

std::optional<std::string> readBelow(const std::string& folder, const std::string& path) {
    std::error_code problem;
    const fs::path file = fs::canonical(folder + "/" + path, problem);
    const fs::path within =
        problem ? fs::path() : file.lexically_relative(fs::canonical(folder, problem));
    std::string unused;
    if (problem || isHidden(path) || isHidden(within.string())) {
        return std::nullopt;
    }
    return base::readFile(file, kLargestFile, &unused);
}

std::string withElement(const std::string& document, const std::string& element) {
    return std::string(document).insert(placeOf(document), element);
}

}  // namespace page
