#include "app/SingleInstance.h"
#include "app/mLoader.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kx {
namespace {

struct SplitCase {
    const char* name;
    QString line;
    QStringList expected;
};

class CommandLineSplit : public ::testing::TestWithParam<SplitCase> {};

TEST_P(CommandLineSplit, FollowsTheQuotingRule) {
    EXPECT_EQ(mLoader::splitCommandLine(GetParam().line), GetParam().expected);
}

QStringList numbered(int from, int to) {
    QStringList list;
    for (int i = from; i <= to; ++i)
        list << QString::number(i);
    return list;
}

QString numberedLine(int count) {
    return numbered(1, count).join(u' ');
}

INSTANTIATE_TEST_SUITE_P(
    Loader, CommandLineSplit,
    ::testing::Values(SplitCase{"Empty", QString(), {}},
                      SplitCase{"OnlyBlanks", QStringLiteral(" \t  "), {}},
                      SplitCase{"BlanksAndTabsSeparate",
                                QStringLiteral("  a\tb   c "),
                                {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}},
                      SplitCase{"QuotesKeepBlanks",
                                QStringLiteral("/x \"C:\\My Files\\a b.txt\" y"),
                                {QStringLiteral("/x"), QStringLiteral("C:\\My Files\\a b.txt"),
                                 QStringLiteral("y")}},
                      SplitCase{"QuoteInsideAWordJoinsIt",
                                QStringLiteral("ab\"c d\"e f"),
                                {QStringLiteral("abc de"), QStringLiteral("f")}},
                      SplitCase{"EmptyQuotesGiveAnEmptyArgument",
                                QStringLiteral("a \"\" b"),
                                {QStringLiteral("a"), QString(), QStringLiteral("b")}},
                      SplitCase{"UnclosedQuoteRunsToTheEnd",
                                QStringLiteral("a \"b c"),
                                {QStringLiteral("a"), QStringLiteral("b c")}},
                      SplitCase{"SixteenArgumentsAreKept", numberedLine(16), numbered(1, 16)},
                      SplitCase{"TheSeventeenthIsDropped", numberedLine(20), numbered(1, 16)}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(Loader, RegisterIsRecognisedOnlyAsFirstArgument) {
    const QString reg = QStringLiteral("/REGISTER");
    EXPECT_TRUE(mLoader::isRegisterRequest({reg}));
    EXPECT_TRUE(mLoader::isRegisterRequest({QStringLiteral("/register")}));
    EXPECT_TRUE(mLoader::isRegisterRequest({QStringLiteral("  /ReGiStEr\t"), QStringLiteral("x")}));
    EXPECT_TRUE(mLoader::isRegisterRequest(mLoader::splitCommandLine(u"\" /register \"")));
    EXPECT_FALSE(mLoader::isRegisterRequest({}));
    EXPECT_FALSE(mLoader::isRegisterRequest({QStringLiteral("x"), reg}));
    EXPECT_FALSE(mLoader::isRegisterRequest({QStringLiteral("/REGISTERED")}));
    EXPECT_FALSE(mLoader::isRegisterRequest({QStringLiteral("/UNREGISTER")}));
}

TEST(Loader, ProgramNameIsNotAnArgument) {
    EXPECT_EQ(mLoader::arguments({QStringLiteral("kxcpl"), QStringLiteral("/register")}),
              QStringList{QStringLiteral("/register")});
    EXPECT_EQ(mLoader::arguments(QStringList{QStringLiteral("kxcpl")} + numbered(1, 20)),
              numbered(1, 16));
}

class LoaderRun : public ::testing::Test {
protected:
    QString lockPath() const { return m_dir.filePath(QStringLiteral("kxcpl.lock")); }
    int run(SingleInstance& instance, const QStringList& arguments) {
        return mLoader::run(instance, arguments, [this] {
            ++windows;
            return 7;
        });
    }
    int windows = 0;

private:
    QTemporaryDir m_dir;
};

TEST_F(LoaderRun, FirstStartShowsTheMainWindow) {
    SingleInstance instance(lockPath());
    EXPECT_EQ(run(instance, {}), 7);
    EXPECT_EQ(windows, 1);
}

TEST_F(LoaderRun, SecondInstanceEndsAtOnceWithoutAWindow) {
    SingleInstance first(lockPath());
    ASSERT_TRUE(first.tryAcquire());
    SingleInstance second(lockPath());
    EXPECT_EQ(run(second, {}), 0);
    EXPECT_EQ(windows, 0);
}

TEST_F(LoaderRun, RegisterEndsWithoutAWindow) {
    SingleInstance instance(lockPath());
    EXPECT_EQ(run(instance, {QStringLiteral(" /register ")}), 0);
    EXPECT_EQ(windows, 0);
    EXPECT_EQ(run(instance, {QStringLiteral("x"), QStringLiteral("/register")}), 7);
}

TEST_F(LoaderRun, LockOfACrashedRunDoesNotBlock) {
    // What a run that died without unlocking leaves: a lock naming a process that is gone.
    QFile stale(lockPath());
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.write("2147483000\nkxcpl\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    stale.close();

    SingleInstance instance(lockPath());
    EXPECT_EQ(run(instance, {}), 7);
    SingleInstance second(lockPath());
    EXPECT_FALSE(second.tryAcquire()) << "the new run holds the lock again";
}

} // namespace
} // namespace kx
