#include "app/SingleInstance.h"
#include "app/mLoader.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kx {
namespace {

QStringList numbered(int from, int to) {
    QStringList list;
    for (int i = from; i <= to; ++i)
        list << QString::number(i);
    return list;
}

TEST(Loader, CommandLineFollowsTheQuotingRuleUpToSixteenArguments) {
    const std::pair<QString, QStringList> cases[] = {
        {QStringLiteral(" \t  "), {}},
        {QStringLiteral("  a\tb   c "), {"a", "b", "c"}},
        {QStringLiteral("/x \"C:\\My Files\\a b.txt\" y"), {"/x", "C:\\My Files\\a b.txt", "y"}},
        {QStringLiteral("ab\"c d\"e f"), {"abc de", "f"}},
        {QStringLiteral("a \"b c"), {"a", "b c"}},
        {numbered(1, 20).join(u' '), numbered(1, 16)},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(mLoader::splitCommandLine(line), expected) << line.toStdString();
    EXPECT_EQ(mLoader::arguments(QStringList{QStringLiteral("kxcpl")} + numbered(1, 20)),
              numbered(1, 16))
        << "the program name is not an argument";
}

TEST(Loader, RegisterIsRecognisedInAnyCaseOnlyAsFirstArgument) {
    for (const QStringList& yes : {QStringList{"/REGISTER"}, QStringList{"  /ReGiStEr\t", "x"},
                                   mLoader::splitCommandLine(u"\" /register \"")})
        EXPECT_TRUE(mLoader::isRegisterRequest(yes)) << yes.join(u'|').toStdString();
    for (const QStringList& no : {QStringList{}, QStringList{"x", "/register"},
                                  QStringList{"/REGISTERED"}, QStringList{"/UNREGISTER"}})
        EXPECT_FALSE(mLoader::isRegisterRequest(no)) << no.join(u'|').toStdString();
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

// A lock left by a run that died without unlocking names a process that is gone: it does not
// block. "/register" or a second instance ends at once without a window.
TEST_F(LoaderRun, RegisterOrASecondInstanceEndsAtOnceButACrashedRunDoesNotBlock) {
    QFile stale(lockPath());
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.write("2147483000\nkxcpl\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    stale.close();

    SingleInstance first(lockPath());
    EXPECT_EQ(run(first, {QStringLiteral(" /register ")}), 0);
    EXPECT_EQ(run(first, {}), 7);
    SingleInstance second(lockPath());
    EXPECT_EQ(run(second, {}), 0);
    EXPECT_EQ(windows, 1);
    EXPECT_FALSE(second.tryAcquire()) << "the first run holds the lock";
}

} // namespace
} // namespace kx
