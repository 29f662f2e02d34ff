// Asks a small deck expressions: the lines ahead of the first line "%%%" are expressions, what follows is the deck. The
// answers of its index must be those of a walk over its keywords.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include <boost/lexical_cast.hpp>
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/KeywordFileManager.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>

#include "deck/DeckKeywords.h"
#include "files/KeywordFile.h"
#include "keywords/DeserializeState.h"
#include "tests/support/PlainView.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

const std::filesystem::path& DeckFile()
{
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("fuzz_context_" + std::to_string(getpid()) + ".DATA");
    return path;
}

/// What the context answers to each expression, with the messages that it sends.
std::string Answers(const IDeckKeywords& view, const std::vector<std::string>& expressions)
{
    std::string all;
    const Service::Log::Handler before =
        Service::Log::SetHandler([&all](std::string_view text, int) { (all += text) += '\n'; });
    const Context context(&view);
    for (const std::string& expression : expressions) {
        int value = -77;
        try {
            if (context.EvaluateIntegerExpr(expression, value)) all += std::to_string(value);
        } catch (const DeckManagerException& exception) {
            all += exception.what();
        } catch (const boost::bad_lexical_cast&) {
            all += "no index";
        }
        all += '\n';
    }
    Service::Log::SetHandler(before);
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    std::string_view input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> expressions;
    while (!input.empty()) {
        const std::size_t end = input.find('\n');
        const std::string_view line = input.substr(0, end);
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
        if (line == "%%%") break;
        if (expressions.size() < 50) expressions.emplace_back(line);
    }
    {
        std::ofstream stream(DeckFile(), std::ios::binary);
        stream.write(input.data(), static_cast<std::streamsize>(input.size()));
    }
    {
        KeywordFileManager manager("");
        const std::shared_ptr<KeywordFile> top = manager.GetKeywordFile(Service::FileName(DeckFile().string()), true);
        const DeckKeywords view(top, true);
        const TestSupport::PlainView plain(view);
        try {
            Answers(plain, expressions); // reads the data, whose messages come once
            if (Answers(view, expressions) != Answers(plain, expressions)) std::abort();
            top->Reload();
            Answers(view, expressions);
        } catch (const DeckManagerException&) {
            // The deck can't be loaded.
        }
    }
    std::filesystem::remove(DeckFile());
    return 0;
}
