#include "tests/support/LogRecorder.h"

#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>

namespace Tarn::Fjel::Core::Service {
namespace {

using TestSupport::LogRecorder;

TEST(Log, WithoutAHandlerMessagesAreDropped)
{
    const Log::Handler previous = Log::SetHandler({});
    Log::SendLogMessage("nobody hears", Log::Error);
    Log::LogWF("%s", "nor this");
    EXPECT_FALSE(Log::SetHandler(previous));
}

TEST(Log, TextsPassAsTheyStandAndFormatsAreFilledIn)
{
    LogRecorder log;
    Log::SendLogMessage("100% of %s %n", Log::Error);
    Log::LogWF("%s near line %d in %s.", "Keyword X is not recognized", 7, std::string(5000, 'p').c_str());
    ASSERT_EQ(log.Count(), 2);
    EXPECT_EQ(log.Messages()[0].text, "100% of %s %n");
    EXPECT_EQ(log.Messages()[0].severity, 3);
    EXPECT_EQ(log.Messages()[1].text, "Keyword X is not recognized near line 7 in " + std::string(5000, 'p') + ".");
    EXPECT_EQ(log.Messages()[1].severity, 2);
}

TEST(Log, EnablersNestAndPutBackWhatWasInForce)
{
    LogRecorder log;
    {
        const LogEnabler off(false);
        Log::SendLogMessage("a", 2);
        EXPECT_FALSE(Log::isEnabled());
        {
            const LogEnabler on(true);
            Log::SendLogMessage("b", 2);
        }
        EXPECT_FALSE(Log::isEnabled());
        Log::LogWF("c");
    }
    Log::SendLogMessage("d", 2);
    EXPECT_EQ(log.Texts(), (std::vector<std::string>{"b", "d"}));
}

TEST(Log, APlaceFollowsTheLineThatIsRead)
{
    LogRecorder log;
    struct Reader
    {
        int position = 100;
        static int LineOf(const void* reader) { return static_cast<const Reader*>(reader)->position / 10; }
    } reader;
    {
        int line = 1;
        const Log::Place outer("outer.inc", &line);
        line = 5;
        Log::SendLogMessage("a", 2);
        {
            const Log::Place inner("inner.inc", &Reader::LineOf, &reader);
            reader.position = 200;
            Log::SendLogMessage("b", 2);
        }
        line = 6;
        Log::SendLogMessage("c", 2);
    }
    Log::SendLogMessage("d", 2);
    ASSERT_EQ(log.Count(), 4);
    const std::pair<std::string, int> places[] = {{"outer.inc", 5}, {"inner.inc", 20}, {"outer.inc", 6}, {"", -1}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(log.Messages()[i].file, places[i].first);
        EXPECT_EQ(log.Messages()[i].line, places[i].second);
    }
}

TEST(Log, AWitnessCountsWhatIsSentAroundIt)
{
    const Log::Probe around;
    const Log::Witness outer;
    Log::SendLogMessage("a", Log::Warning);
    {
        const LogEnabler off(false);
        Log::LogWF("%d", 1); // no handler either
        MessageCapper::instance().logW("b");
        const Log::Witness inner;
        Log::SendLogMessage("c", Log::Error);
        EXPECT_EQ(inner.Count(), 1);
        const Log::Probe probe;
        Log::SendLogMessage("d", Log::Error);
        EXPECT_EQ(inner.Count(), 1);
    }
    EXPECT_EQ(outer.Count(), 3);
}

TEST(Log, ProbesMarkTheirMessages)
{
    LogRecorder log;
    {
        const Log::Probe outer;
        {
            const Log::Probe inner;
        }
        Log::SendLogMessage("a", 3);
    }
    Log::SendLogMessage("b", 3);
    EXPECT_TRUE(log.Messages()[0].probe);
    EXPECT_FALSE(log.Messages()[1].probe);
}

TEST(Log, AHandlerMayReplaceItselfAndLog)
{
    std::vector<std::string> texts;
    const Log::Handler previous = Log::SetHandler([&texts](std::string_view text, int) {
        texts.emplace_back(text);
        Log::SetHandler([&texts](std::string_view later, int) { texts.push_back("2:" + std::string(later)); });
        Log::SendLogMessage("from inside", 2);
        texts.emplace_back(text); // the captures are still there
    });
    Log::SendLogMessage("first", 2);
    Log::SetHandler(previous);
    EXPECT_EQ(texts, (std::vector<std::string>{"first", "2:from inside", "first"}));
}

class MessageCapperTest : public ::testing::Test
{
protected:
    void SetUp() override { m_capper.reset(); }
    void TearDown() override { m_capper.reset(); }

    MessageCapper& m_capper = MessageCapper::instance();
    LogRecorder m_log;
};

TEST_F(MessageCapperTest, TenOfAKindPassAndOneTellsHowManyMore)
{
    m_capper.setCurrentKeyword("PORO");
    for (int line = 1; line <= 25; ++line) {
        const Log::Place place("a.inc", line);
        m_capper.logW("too long");
        if (line <= 3) m_capper.logW("other kind");
    }
    EXPECT_EQ(m_log.CountOf("too long"), 10);
    EXPECT_EQ(m_log.CountOf("other kind"), 3);
    EXPECT_EQ(m_log.Count(), 13);

    m_log.Clear();
    m_capper.setCurrentKeyword("PERMX");
    ASSERT_EQ(m_log.Count(), 1);
    EXPECT_EQ(m_log.Messages()[0].text, "15 more messages of this kind in keyword PORO: too long");
    EXPECT_EQ(m_log.Messages()[0].severity, 2);
    EXPECT_EQ(m_log.Messages()[0].file, "a.inc");
    EXPECT_EQ(m_log.Messages()[0].line, 11);

    m_log.Clear();
    for (int i = 0; i < 11; ++i)
        m_capper.logW("too long");
    m_capper.flush();
    m_capper.flush();
    EXPECT_EQ(m_log.CountOf("too long"), 10);
    EXPECT_EQ(m_log.CountOf("1 more message of this kind in keyword PERMX: too long"), 1);
    EXPECT_EQ(m_log.Count(), 11);
}

TEST_F(MessageCapperTest, MessagesThatNobodyHearsAreNotCounted)
{
    m_capper.setCurrentKeyword("PORO");
    {
        const LogEnabler off(false);
        for (int i = 0; i < 20; ++i)
            m_capper.logW("x");
    }
    {
        const Log::Probe probe;
        for (int i = 0; i < 20; ++i)
            m_capper.logW("x");
    }
    m_log.Clear();
    m_capper.logW("x");
    m_capper.flush();
    EXPECT_EQ(m_log.Texts(), std::vector<std::string>{"x"});
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
