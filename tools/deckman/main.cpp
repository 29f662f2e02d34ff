#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include <fmt/format.h>

#include "command/Verbs.h"
#include "editing/KeywordEdits.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Progress.h"
#include "session/DeckSession.h"
#include "usage/CommandLine.h"

namespace {

using namespace Deckman;

ExitStatus Edit(OnEdits edit, DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    run.Prepare(options);
    edit(run, options);
    run.Finish(out);
    return Done;
}

template <class Run>
ExitStatus RunOnDeck(const Run& run, const Options& options, Messages& messages)
{
    // Nothing is to be undone, and the system takes back the memory of a large deck faster than its destructors do.
    // A check scans: what is taken from a cache sends no message of the scan again.
    const bool usesCache = options.verb->name != "check";
    if (!usesCache && !options.project.empty()) ToProjectDirectory(options.project);
    static DeckSession* const opened =
        new DeckSession(options.deck, messages, usesCache ? options.project : std::string());
    DeckSession& session = *opened;
    ExitStatus status = Done;
    try {
        status = run(session);
    } catch (const Failure& failure) {
        messages.Error(failure.Place(), failure.what());
        status = failure.Status();
    } catch (const Service::Exception& exception) {
        messages.Error(messages.Shown(session.TopFile().GetFullName()), exception.what());
        status = NotThere;
    }
    if (usesCache && !options.project.empty()) session.SaveCache();
    // Only trouble makes it worth while to ask every file.
    return messages.Errors() > 0 && session.HasUnreadableFile() ? FileFailure : status;
}

/// The verb, with whatever goes wrong turned into a message and a status.
ExitStatus Run(const Options& options, Messages& messages, Output& out)
{
    try {
        if (const auto* onDeck = std::get_if<OnDeck>(&options.verb->run))
            return RunOnDeck([&](DeckSession& session) { return (*onDeck)(session, options, out); }, options, messages);
        if (const auto* edit = std::get_if<OnEdits>(&options.verb->run))
            return RunOnDeck([&](DeckSession& session) { return Edit(*edit, session, options, out); }, options,
                             messages);
        return std::get<OnItsOwn>(options.verb->run)(messages, options, out);
    } catch (const Failure& failure) {
        messages.Error(failure.Place(), failure.what());
        return failure.Status();
    } catch (const Service::Exception& exception) {
        messages.Error(options.deck, exception.what());
        return NotThere;
    } catch (const std::bad_alloc&) {
        messages.Error(options.deck, "There is not enough memory for this.");
        return FileFailure;
    } catch (const std::exception& exception) {
        messages.Error(options.deck, exception.what());
        return FileFailure;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const auto parsed = ParseOptions(argc, argv);
    if (const auto* status = std::get_if<ExitStatus>(&parsed)) return *status;
    const Options& options = std::get<Options>(parsed);

    Progress::Begin();
    Output out(!options.noPager);
    Messages messages;
    messages.ShowAsides(options.all);
    SetUpProcess(options);
    ExitStatus status = Run(options, messages, out);
    Progress::End();
    out.Finish();
    if (out.Failure() != 0) {
        messages.Error("standard output", std::strerror(out.Failure()));
        status = FileFailure;
    }
    const bool trouble = messages.Errors() > 0 || (options.strict && messages.Warnings() > 0);
    return trouble ? std::max(status, NotThere) : status;
}
