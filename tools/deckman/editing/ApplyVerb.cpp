#include <string>
#include <variant>
#include <vector>

#include <fmt/format.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "editing/EditScript.h"
#include "editing/KeywordEdits.h"
#include "session/InputText.h"
#include "usage/CommandLine.h"

namespace Deckman {

namespace {

/// One step of one line; what goes wrong is told with the line of the script.
template <class Step>
void AtLine(const std::string& script, int line, const Step& step)
{
    const std::string place = fmt::format("{}:{}", script, line);
    const auto told = [](const std::string& where, const std::string& what) {
        return where.empty() ? what : fmt::format("{}: {}", where, what);
    };
    // Where the library knows no place of its own.
    const Service::Log::Place here(script, line);
    try {
        step();
    } catch (const Failure& failure) {
        throw Failure(failure.Status(), told(failure.Place(), failure.what()), place);
    } catch (const Service::Exception& exception) {
        throw Failure(NotThere, exception.what(), place);
    }
}

} // namespace

ExitStatus RunApply(DeckSession& session, const Options& options, Output& out)
{
    const std::string name = options.file == "-" ? "standard input" : options.file;
    const std::string text = ReadInputText(options.file);
    if (Service::AllBlanks(text)) throw Failure(WrongUsage, "A script of edits is expected, and there is none.", name);

    const std::vector<ScriptCommand> commands = ReadScript(text, name);
    std::vector<Options> lines;
    ScriptLineParser parser;
    for (const ScriptCommand& command : commands)
        AtLine(name, command.line, [&] { lines.push_back(parser.Parse(command.words)); });

    KeywordEdits run(session, options);
    for (std::size_t i = 0; i < lines.size(); ++i)
        AtLine(name, commands[i].line, [&] { run.Prepare(lines[i]); });
    for (std::size_t i = 0; i < lines.size(); ++i) {
        AtLine(name, commands[i].line, [&] {
            run.BeginLine(commands[i].line);
            std::get<OnEdits>(lines[i].verb->run)(run, lines[i]);
        });
    }
    run.Finish(out);
    return Done;
}

} // namespace Deckman
