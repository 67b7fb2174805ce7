#include "PrintQString.h"
#include "TempEnvironment.h"
#include "cli/CommandLine.h"

#include <gtest/gtest.h>

namespace kx::cli {
namespace {

ParsedCommandLine parse(QStringList arguments) {
    arguments.prepend(QStringLiteral("kxplate"));
    return parseCommandLine(arguments);
}

TEST(CommandLine, ReadsEveryValueWhereverTheOptionsStand) {
    const ParsedCommandLine parsed =
        parse({QStringLiteral("-o"), QStringLiteral("out.txt"), QStringLiteral("--scenario"),
               QStringLiteral("bench.scenario"), QStringLiteral("--speed"), QStringLiteral("250"),
               QStringLiteral("capture"), QStringLiteral("20418"), QStringLiteral("--seconds"),
               QStringLiteral("2.5"), QStringLiteral("--signals"), QStringLiteral("bridges"),
               QStringLiteral("--frequency"), QStringLiteral("200")});
    ASSERT_TRUE(parsed.invocation) << parsed.error.toStdString();
    const Invocation& in = *parsed.invocation;
    EXPECT_EQ(in.command, QStringLiteral("capture"));
    EXPECT_EQ(in.serial, QStringLiteral("20418"));
    EXPECT_EQ(in.output, QStringLiteral("out.txt"));
    EXPECT_EQ(in.scenarioFile, QStringLiteral("bench.scenario"));
    EXPECT_EQ(in.speed, 250.0);
    EXPECT_EQ(in.seconds, 2.5);
    EXPECT_EQ(in.frequency, 200.0f);
    EXPECT_EQ(in.signalSet, DisplayType::Voltages);

    const ParsedCommandLine zero = parse({QStringLiteral("zero"), QStringLiteral("11093")});
    ASSERT_TRUE(zero.invocation);
    EXPECT_EQ(zero.invocation->seconds, 5.0);
    EXPECT_FALSE(zero.invocation->write);
    EXPECT_EQ(zero.invocation->speed, 1.0) << "real time unless told";

    const ParsedCommandLine fit =
        parse({QStringLiteral("fit"), QStringLiteral("a.cal"), QStringLiteral("--engine"),
               QStringLiteral("octave"), QStringLiteral("--json")});
    ASSERT_TRUE(fit.invocation);
    EXPECT_EQ(fit.invocation->file, QStringLiteral("a.cal"));
    EXPECT_EQ(fit.invocation->engine, FitEngineChoice::Octave);
    EXPECT_TRUE(fit.invocation->json);
}

// Each bad command line is refused with status 2 and a line that names what is wrong.
TEST(CommandLine, RefusesWhatNoCommandCanDo) {
    const struct {
        QStringList arguments;
        const char* named;
    } cases[] = {
        {{QStringLiteral("capture"), QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("f"),
          QStringLiteral("--seconds"), QStringLiteral("0")},
         "--seconds \"0\""},
        {{QStringLiteral("capture"), QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("f"),
          QStringLiteral("--seconds"), QStringLiteral("86401")},
         "86400"},
        {{QStringLiteral("zero"), QStringLiteral("1"), QStringLiteral("--seconds"),
          QStringLiteral("1,5")},
         "1,5"},
        {{QStringLiteral("capture"), QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("f"),
          QStringLiteral("--seconds"), QStringLiteral("1"), QStringLiteral("--frequency"),
          QStringLiteral("1001")},
         "--frequency"},
        {{QStringLiteral("capture"), QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("f"),
          QStringLiteral("--seconds"), QStringLiteral("1"), QStringLiteral("--signals"),
          QStringLiteral("moments")},
         "moments"},
        {{QStringLiteral("capture"), QStringLiteral("1"), QStringLiteral("--seconds"),
          QStringLiteral("1")},
         "-o FILE"},
        {{QStringLiteral("report"), QStringLiteral("a.cal")}, "-o FILE"},
        {{QStringLiteral("fit"), QStringLiteral("a.cal"), QStringLiteral("--engine"),
          QStringLiteral("matlab")},
         "matlab"},
        {{QStringLiteral("list"), QStringLiteral("--write")}, "write"},
        {{QStringLiteral("list"), QStringLiteral("20418")}, "20418"},
        {{QStringLiteral("info")}, "SERIAL"},
        {{QStringLiteral("info"), QStringLiteral("1"), QStringLiteral("2")}, "\"2\""},
        {{QStringLiteral("--scenario"), QStringLiteral("x")}, "no command"},
        // The speeds kxcpl takes, refused in its words.
        {{QStringLiteral("--speed"), QStringLiteral("0"), QStringLiteral("list")},
         "--speed 0: give a whole number from 1 to 1000."},
        {{QStringLiteral("noise"), QStringLiteral("1"), QStringLiteral("--speed"),
          QStringLiteral("1001")},
         "--speed 1001:"},
        {{QStringLiteral("--speed"), QStringLiteral("2.5"), QStringLiteral("list")}, "2.5"},
    };
    for (const auto& c : cases) {
        const ParsedCommandLine parsed = parse(c.arguments);
        EXPECT_FALSE(parsed.invocation) << c.arguments.join(u' ').toStdString();
        EXPECT_EQ(parsed.exitCode, 2) << c.arguments.join(u' ').toStdString();
        EXPECT_FALSE(parsed.error.contains(u'\n'));
        EXPECT_TRUE(parsed.error.contains(QLatin1String(c.named))) << parsed.error.toStdString();
    }
}

TEST(CommandLine, HelpAndVersionEndWell) {
    const test::TempEnvironment environment; // the help names the files' places
    const ParsedCommandLine general = parse({QStringLiteral("--help")});
    EXPECT_EQ(general.exitCode, 0);
    for (const char* command : {"list", "info", "capture", "zero", "noise", "fit", "report"})
        EXPECT_TRUE(general.output.contains(QStringLiteral("  %1 ").arg(QLatin1String(command))))
            << command;
    const ParsedCommandLine zero = parse({QStringLiteral("zero"), QStringLiteral("-h")});
    EXPECT_EQ(zero.exitCode, 0);
    EXPECT_TRUE(zero.output.contains(QLatin1String("--write")));
    EXPECT_EQ(parse({QStringLiteral("--version")}).output.left(8), QStringLiteral("kxplate "));
}

} // namespace
} // namespace kx::cli
