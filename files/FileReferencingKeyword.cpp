#include "files/FileReferencingKeyword.h"

#include <algorithm>
#include <utility>

#include <boost/filesystem/exception.hpp>

#include "files/ExportedFileMap.h"
#include "files/KeywordFactory.h"
#include "files/KeywordFile.h"
#include "keywords/ForceRewrite.h"
#include "text/KeywordFileReader.h"
#include "text/Tokenizer.h"
#include <deckmanager/Context.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

std::string Quoted(const std::string& name)
{
    return std::string(1, VeldaneDeckInfo::QUOTE).append(name) += VeldaneDeckInfo::QUOTE;
}

} // namespace

std::pair<std::size_t, std::size_t> FileReferencingKeyword::NameToken(std::string_view text)
{
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string_view line = text.substr(begin, end - begin);
        const std::string_view rest = Service::TrimmedLeft(line);
        if (rest.empty() || VeldaneDeckInfo::BeginsWithCommentMarker(rest)) {
            begin = end + 1;
            continue;
        }
        // The reader's own rules: a name without quotes ends at a slash, a comma or a comment.
        const Service::Log::Probe probe;
        const std::string content(line);
        Tokenizer tokenizer;
        tokenizer.SetText(&content);
        std::string_view token;
        bool quoted = false;
        const bool isName = tokenizer.NextView(token, &quoted, false) &&
                            (quoted || token != VeldaneDeckInfo::TERMINATION_TOKEN) &&
                            content[tokenizer.TokenBegin()] == rest.front();
        const std::size_t at = begin + (line.size() - rest.size());
        return {at, isName ? tokenizer.TokenEnd() - tokenizer.TokenBegin() : 0};
    }
    return {0, 0};
}

std::optional<std::string> FileReferencingKeyword::TokenAlone(const std::string& text) const
{
    const std::shared_ptr<std::string> present = const_cast<FileReferencingKeyword*>(this)->GetDataText();
    if (!present) return std::nullopt;
    const auto [at, size] = NameToken(*present);
    const auto [changedAt, changedSize] = NameToken(text);
    const std::string_view before = *present;
    const std::string_view after = text;
    if (size == 0 || changedSize == 0 || before.substr(0, at) != after.substr(0, changedAt) ||
        before.substr(at + size) != after.substr(changedAt + changedSize))
    {
        return std::nullopt;
    }
    return text.substr(changedAt, changedSize);
}

const FileReferencingKeyword* FileReferencingKeyword::From(const IKeyword* keyword)
{
    return dynamic_cast<const FileReferencingKeyword*>(keyword);
}

std::optional<std::string> FileReferencingKeyword::NamedText(const Context& context) const
{
    const Keywords::IKeywordData* data = const_cast<FileReferencingKeyword*>(this)->DataUnlessUnreadable(context);
    return data != nullptr ? NameIn(data) : std::nullopt;
}

Service::FileName FileReferencingKeyword::NamedFile(const Context& context) const
{
    const std::optional<std::string> text = NamedText(context);
    Service::FileName name;
    if (!text || Service::AllBlanks(*text)) return name;
    try {
        name = Service::FileName(Service::Trimmed(*text));
        const KeywordFile* owner = Owner() != nullptr ? Owner()->AsKeywordFile() : nullptr;
        if (!name.IsComplete() && owner != nullptr) name.MakeComplete(owner->DataFile().GetFileName().GetDirectory());
    } catch (const boost::filesystem::filesystem_error&) {
        return {};
    }
    return name;
}

std::unique_ptr<Keyword> FileReferencingKeyword::Blank() const
{
    return KeywordFactory::Create(*GetSyntax(), VariablesAllowed(), {}, false, nullptr, nullptr, -1, -1, nullptr);
}

std::optional<std::string> FileReferencingKeyword::TextWithName(const std::string& name, const Context& context) const
{
    auto& self = const_cast<FileReferencingKeyword&>(*this);
    const auto saysName = [&](const std::string& text) {
        const Service::Log::Probe probe;
        const std::unique_ptr<Keyword> keyword = Blank();
        return keyword->SetDataText(text, false) && NameIn(keyword->GetData(context)) == name;
    };
    const std::shared_ptr<std::string> text = self.GetDataText();
    if (!ForceRewrite::IsOn() && text) {
        const auto [at, size] = NameToken(*text);
        const std::string_view present = std::string_view(*text).substr(at, size);
        if (size > 0 && (present == name || present == Quoted(name))) return std::nullopt;
        std::string changed = *text;
        changed.replace(at, size, Quoted(name));
        // What is no plain name there (a repeat, a text that goes on) is left to the data tree.
        if (size > 0 && saysName(changed)) return changed;
    }
    std::unique_ptr<Keywords::IKeywordData> data;
    if (const Keywords::IKeywordData* present = self.GetData(context)) data = present->CloneSafely();
    if (!data) data = Keywords::KeywordDataFactory::Instance().ConstructSafely(*GetSyntax());
    PutName(*data, name);
    const std::unique_ptr<Keyword> keyword = Blank();
    if (!keyword->SetData(std::move(data), false)) return std::nullopt;
    const std::string written = *keyword->GetDataText();
    return saysName(written) ? std::optional<std::string>(written) : std::nullopt;
}

void FileReferencingKeyword::ExportTo(ILineWriter& writer, const Service::Directory& directory, const Context& context,
                                      Keywords::SimulatorType simulator, ExportedFileMap& fileMap) const
{
    const std::optional<std::string> name = NameInCopy(directory, context, fileMap);
    const std::optional<std::string> text = name ? TextWithName(*name, context) : std::nullopt;
    if (text)
        WriteWithText(writer, *text, context);
    else
        Write(writer, context, simulator);
}

} // namespace Tarn::Fjel::Core::DeckManager
