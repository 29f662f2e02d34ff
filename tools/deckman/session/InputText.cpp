#include "session/InputText.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <fmt/format.h>
#include <tarn/service/Strings.h>

#include "session/DeckSession.h"

namespace Deckman {

std::string ReadInputText(const std::string& path)
{
    const bool isInput = path == "-";
    const std::string place = isInput ? "standard input" : path;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(isInput ? nullptr : std::fopen(path.c_str(), "rb"),
                                                                 &std::fclose);
    std::FILE* const file = isInput ? stdin : opened.get();
    if (file == nullptr) throw Failure(FileFailure, fmt::format("{}.", std::strerror(errno)), place);
    std::string text;
    char piece[1 << 16];
    while (const std::size_t count = std::fread(piece, 1, sizeof piece, file))
        text.append(piece, count);
    if (std::ferror(file) != 0) throw Failure(FileFailure, fmt::format("{}.", std::strerror(errno)), place);
    // A byte order mark is the file's, and not of its text.
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    Service::StringReplace(text, "\r\n", "\n");
    return text;
}

} // namespace Deckman
