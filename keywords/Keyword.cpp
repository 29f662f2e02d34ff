#include "keywords/Keyword.h"

#include "keywords/CommentManager.h"
#include "keywords/IKeywordOwner.h"
#include "keywords/ITagMgr.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordState.h"
#include "text/KeywordFileReader.h"
#include "text/LineStringReader.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

IKeyword::~IKeyword() = default;

Keyword::Keyword(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                 std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
                 const KeywordMarks* marks)
    : m_syntax(&syntax), m_owner(owner), m_reader(std::move(reader)), m_position(position), m_size(size),
      m_variablesAllowed(variablesAllowed)
{
    if (!Service::AllBlanks(name) && name != syntax.GetName()) m_givenName = std::make_unique<std::string>(name);
    if (marks != nullptr) {
        m_line = marks->line;
        m_suppressed = marks->suppressed;
        m_tagKnown = marks->tagKnown;
        m_taggedOnDisk = marks->tagged;
    } else if (m_reader) {
        m_suppressed = LineReaderUtil::NextLineIsSuppressed(BorrowReader().get(), position);
    }
    m_committedSuppressed = m_suppressed;
}

Keyword::~Keyword() = default;

const std::string& Keyword::GetName() const
{
    return m_givenName ? *m_givenName : m_syntax->GetName();
}

std::string Keyword::GetComment() const
{
    return GetCommentManager().GetComment();
}

bool Keyword::IsGenerated() const
{
    // Most keywords are asked once, by a listing: what the scan learnt answers without a tag manager.
    if (!HasTagMgr() && m_tagKnown) {
        if (m_taggedOnDisk || (m_owner != nullptr && m_owner->IsFileTagged())) return true;
        if (m_syntax->GetKind() != Keywords::KeywordKind::Include) return false;
    }
    return GetTagMgr().IsTagged();
}

bool Keyword::IsInGeneratedFile() const
{
    return GetTagMgr().IsFileTagged();
}

IKeywordFile* Keyword::GetFile() const
{
    return m_owner;
}

KeywordFile* Keyword::GetDiskFile() const
{
    if (!m_reader || m_owner == nullptr || m_position < 0 || m_size < 0) return nullptr;
    return m_owner->DiskFileOf(*m_reader, m_variablesAllowed);
}

int Keyword::GetLine() const
{
    if (!m_reader) return -1;
    return m_line > 0 ? m_line : m_reader->LineNumberAt(m_position);
}

long long Keyword::GetPosition() const
{
    return m_reader && m_position >= 0 && m_size >= 0 ? m_position : 0;
}

long long Keyword::GetSize() const
{
    return m_reader && m_position >= 0 && m_size >= 0 ? m_size : 0;
}

Keyword::State& Keyword::GetState() const
{
    if (!m_state) m_state = std::make_unique<State>();
    return *m_state;
}

ICommentManager& Keyword::GetCommentManager() const
{
    State& state = GetState();
    if (!state.commentManager) {
        if (CanHaveComment()) {
            const Service::ReadWatch reading;
            auto manager = std::make_unique<CommentManager>(this);
            RefuseUnlessRead(reading);
            state.commentManager = std::move(manager);
        } else {
            state.commentManager = std::make_unique<CommentManagerDummy>();
        }
    }
    return *state.commentManager;
}

bool Keyword::CanHaveComment() const
{
    const Keywords::MDType type = Keywords::KeywordUtils::GetMDType(m_syntax->GetMetaData());
    return type != Keywords::MDType::RawText && GetName() != "TITLE";
}

Keywords::IKeywordData* Keyword::GetData(const Context& context)
{
    return DataTree(context);
}

Keywords::IKeywordData* Keyword::DataTree(const Context& context) const
{
    if (m_state && m_state->data) return m_state->data.get();
    if (m_syntax->GetMetaData() == nullptr || GetState().beingRead) return nullptr;

    State& state = *m_state;
    const ReadingMark mark(state.beingRead);
    std::unique_ptr<KeywordVariables> variables;
    if (m_variablesAllowed) variables = std::make_unique<KeywordVariables>();
    std::unique_ptr<Keywords::IKeywordData> data = ParseData(context, variables.get());
    if (variables && variables->HasVariables()) state.variables = std::move(variables);
    state.data = std::move(data);
    return state.data.get();
}

Keywords::IKeywordData* Keyword::DataUnlessUnreadable(const Context& context)
{
    const Service::ReadWatch reading;
    try {
        return DataTree(context);
    } catch (const DeckManagerException&) {
        if (!reading.SawFailure()) throw;
        return nullptr;
    }
}

std::unique_ptr<Keywords::IKeywordData> Keyword::ReadData(const Context& context, KeywordVariables* variables)
{
    if (m_syntax->GetMetaData() == nullptr) return nullptr;
    // A walk over a deck leaves no state behind in keywords that had none.
    struct StateGuard
    {
        std::unique_ptr<State>& state;
        bool hadState;
        ~StateGuard()
        {
            if (!hadState && !state->IsInUse()) state.reset();
        }
    };
    const StateGuard guard{m_state, m_state != nullptr};
    State& state = GetState();
    if (state.beingRead) return nullptr;
    if (TreeIsData()) return state.data->CloneSafely();

    const ReadingMark mark(state.beingRead);
    KeywordVariables unseen;
    if (!m_variablesAllowed) variables = nullptr;
    if (m_variablesAllowed && variables == nullptr) variables = &unseen;
    return ParseData(context, variables);
}

bool Keyword::TreeIsData() const
{
    return (m_dataChanged || !HasValidExtent()) && m_state && m_state->data && !m_state->textIsData;
}

std::unique_ptr<ILineReader> Keyword::OpenForData() const
{
    return m_reader->OpenLineReader(!Environment::Instance().GetAllowIncompleteDeck());
}

/// Reads text that has replaced the data, else the file. Text that was merely read is a copy of these, and knows less
/// of its lines.
std::unique_ptr<Keywords::IKeywordData> Keyword::ParseData(const Context& context, KeywordVariables* variables) const
{
    std::unique_ptr<Keywords::IKeywordData> data = Keywords::KeywordDataFactory::Instance().ConstructSafely(*m_syntax);
    State& state = GetState();
    if (state.textIsData) {
        const std::shared_ptr<std::string> text = state.heldText;
        LineStringReader lines(*text);
        KeywordDataDeserializer::Deserialize(*this, *data, lines, 0, static_cast<long long>(text->size()), context,
                                             false, variables);
    } else if (!m_dataChanged && HasValidExtent()) {
        const Service::ReadWatch reading;
        if (const std::unique_ptr<ILineReader> lines = OpenForData()) {
            ReadReport report;
            KeywordDataDeserializer::Deserialize(*this, *data, *lines, m_position, m_size, context, true, variables,
                                                 &report);
            if (!reading.SawFailure()) NoteTaken(report);
        }
        RefuseUnlessRead(reading);
    }
    return data;
}

/// Nobody must take what is left for what the file says, and the next who asks may find it.
void Keyword::RefuseUnlessRead(const Service::ReadWatch& reading) const
{
    if (reading.SawFailure() && !Environment::Instance().GetAllowIncompleteDeck()) ThrowUnreadable();
}

void Keyword::NoteTaken(const ReadReport& report) const
{
    State& state = GetState();
    state.takenSize = report.takenEnd < 0 ? -1 : report.takenEnd - m_position;
    state.isReadWhole = report.isComplete;
}

std::shared_ptr<std::string> Keyword::GetDataText()
{
    if (m_state && m_state->heldText) return m_state->heldText;
    if (m_syntax->GetMetaData() == nullptr) return nullptr;
    const Service::ReadWatch reading;
    auto text = std::make_shared<std::string>(m_dataChanged || !HasValidExtent() ? WriteDataText() : ReadDataText());
    RefuseUnlessRead(reading);
    if (!reading.SawFailure()) GetState().heldText = text;
    return text;
}

std::shared_ptr<ILineReader> Keyword::BorrowReader() const
{
    if (m_owner != nullptr) {
        if (std::shared_ptr<ILineReader> opened = m_owner->OpenedReader(*m_reader)) return opened;
    }
    return m_reader->OpenLineReader(false);
}

std::string Keyword::ReadDataText() const
{
    std::string text;
    if (!HasValidExtent()) return text;
    const std::unique_ptr<ILineReader> lines = OpenForData();
    const long long last = m_position + m_size - 1;
    if (!lines || !LineReaderUtil::AdvanceToNonTagLine(lines.get(), m_position, m_size, nullptr, true)) return text;
    lines->ReadRange(lines->Tell(), last, text);
    // It is the text on the disk that has markers, whatever an edit has made of the keyword since.
    if (m_committedSuppressed && Environment::Instance().KeywordSuppressionEnabled())
        LineReaderUtil::ActivateLines(text);
    Service::StringTrimRight(text);
    return text;
}

bool Keyword::HasVariables()
{
    if (!m_variablesAllowed || m_syntax->GetMetaData() == nullptr) return false;

    if (m_dataChanged || !HasValidExtent()) GetDataText();
    const Service::ReadWatch reading;
    // Line by line, so that asking an array of hundreds of megabytes holds no text.
    std::unique_ptr<ILineReader> lines;
    long long end = 0;
    if (m_state && m_state->heldText) {
        lines = std::make_unique<LineStringReader>(*m_state->heldText);
        end = static_cast<long long>(m_state->heldText->size());
    } else if (HasValidExtent()) {
        lines = OpenForData();
        end = m_position + m_size;
        if (lines && !LineReaderUtil::AdvanceToDataLine(lines.get(), m_position, m_size)) lines.reset();
    }
    std::string line;
    long long position = 0;
    while (lines && lines->ReadNextDataLine(line, &position, true) && position < end) {
        if (Keywords::VariablesString::ContainsVariables(line)) return true;
    }
    RefuseUnlessRead(reading);
    return false;
}

KeywordVariables* Keyword::GetVariables(const Context& context)
{
    if (!HasVariables()) return nullptr;
    GetData(context);
    return GetState().variables.get();
}

void Keyword::NotifyUpdated()
{
    if (m_owner != nullptr && m_syntax->GetKind() == Keywords::KeywordKind::Include) m_owner->KeywordUpdated(*this);
}

void Keyword::SetOwner(IKeywordOwner* owner)
{
    if (owner == m_owner) return;
    m_owner = owner;
    OnOwnerChanged();
}

std::optional<Keywords::SectionType> Keyword::FoundIn() const
{
    if (m_foundIn == s_neverFound) return std::nullopt;
    return static_cast<Keywords::SectionType>(m_foundIn);
}

void Keyword::SetFoundIn(std::optional<Keywords::SectionType> section)
{
    m_foundIn = section ? static_cast<std::uint8_t>(*section) & s_neverFound : s_neverFound;
}

bool Keyword::ReadTag() const
{
    if (m_tagKnown) return m_taggedOnDisk;
    if (!HasValidExtent()) return false;
    bool sawTag = false;
    LineReaderUtil::AdvanceToNonTagLine(BorrowReader().get(), m_position, m_size, &sawTag, true);
    return sawTag;
}

} // namespace Tarn::Fjel::Core::DeckManager
