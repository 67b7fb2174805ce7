#include "cli/NoiseCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/RescueSave.h"
#include "device/PlateDevice.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseSession.h"
#include "resources/StringTable.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QFileInfo>

namespace kx::cli {

NoiseCommand::NoiseCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                           QObject* parent)
    : PlateCommand(console, clock, driver, options.serial, strings::NoiseBlock, parent)
    , m_options(std::move(options))
    , m_prompt(console, aboutPlate({}))
    , m_session(std::make_unique<NoiseSession>(clock, m_prompt)) {
    connect(m_session.get(), &NoiseSession::changed, this, &NoiseCommand::showState);
    connect(m_session.get(), &NoiseSession::progressed, this, &NoiseCommand::showProgress);
    connect(m_session.get(), &NoiseSession::testStored, this, &NoiseCommand::showTest);
    connect(m_session.get(), &NoiseSession::testMarked, this, &NoiseCommand::showMarks);
    // A silent plate ends its test as a read time-out does, with the same line.
    connect(m_session.get(), &NoiseSession::silent, this,
            [this] { deviceEvent(DeviceEvent::ReadTimeout); });
    // The session ends a run by itself after its last test or on a failing plate call, which
    // it has told through the prompt.
    connect(m_session.get(), &NoiseSession::runEnded, this,
            [this] { end(m_prompt.messagesTold() > 0 ? DeviceError : Success); });
}

NoiseCommand::~NoiseCommand() = default;

QString NoiseCommand::resultPath() const {
    return m_session->resultPath();
}

bool NoiseCommand::prepare() {
    // A mistyped profile would otherwise run the default plan: five and a half hours.
    if (!m_options.profile.isEmpty() && !QFileInfo(m_options.profile).isFile()) {
        fail(
            FileError,
            QStringLiteral("%1: no such profile").arg(QDir::toNativeSeparators(m_options.profile)));
        return false;
    }
    return true;
}

void NoiseCommand::run(PlateDevice& plate) {
    const IniFile profile =
        m_options.profile.isEmpty() ? IniFile::sharedProfile() : IniFile(m_options.profile);
    if (!m_session->open(&plate, profile, DocumentsFolder())) {
        finish(DeviceError); // the failing call is told
        return;
    }
    if (!m_options.output.isEmpty())
        m_session->chooseResultFile(m_options.output);
    const NoisePlan& plan = m_session->plan();
    console().progress(aboutPlate(QStringLiteral("noise test of %1 tests, results in %2")
                                      .arg(plan.frequencyCount() * plan.excitationCount())
                                      .arg(QDir::toNativeSeparators(resultPath()))));
    if (!m_session->start())
        finish(FileError); // the folder that cannot take the results is told
}

bool NoiseCommand::reactsNow(DeviceEvent) const {
    return m_session->measuring();
}

qsizetype NoiseCommand::presentTest() const {
    const NoiseSequence& sequence = m_session->sequence();
    return sequence.excitationIndex() * m_session->plan().frequencyCount() +
           sequence.frequencyIndex();
}

QString NoiseCommand::aboutTest(qsizetype test) const {
    const NoisePlan& plan = m_session->plan();
    const qsizetype nF = plan.frequencyCount();
    return aboutPlate(QStringLiteral("test %1 of %2 at %3 Hz, %4 V")
                          .arg(test + 1)
                          .arg(nF * plan.excitationCount())
                          .arg(formatNumber(plan.frequencies[test % nF], u"0.000"),
                               formatNumber(plan.excitations[test / nF], u"0.000")));
}

void NoiseCommand::showState() {
    const NoiseSession& session = *m_session;
    if (session.state() == NoiseSession::State::Waiting) {
        const qsizetype test = presentTest();
        if (test != m_announced) {
            // Each test's wait once in a log; its countdown only on a terminal.
            m_announced = test;
            const float wait = session.sequence().waitSeconds(session.plan());
            console().progress(aboutTest(test) + QStringLiteral(": ") +
                               session.sequence().countdownText(0, wait).simplified());
        } else {
            console().transient(aboutPlate(session.progressText()));
        }
    }
    // A run's failed saves, once each; the end tells where the results went.
    if (const QString files = session.fileStatus(); session.running() && files != m_fileStatus) {
        m_fileStatus = files;
        if (!files.isEmpty())
            console().error(aboutPlate(files));
    }
}

void NoiseCommand::showProgress() {
    console().transient(aboutTest(presentTest()) + QStringLiteral(", %1 of %2 samples")
                                                       .arg(m_session->progress())
                                                       .arg(m_session->progressMaximum()));
}

void NoiseCommand::showTest(qsizetype test) {
    console().print(m_session->listLine(test) + u'\n');
    showMarks(test);
}

void NoiseCommand::showMarks(qsizetype test) {
    const qsizetype nF = m_session->plan().frequencyCount();
    if (const quint8 marks = m_session->results().marks(test % nF, test / nF);
        marks != NoiseResults::NotSuspect)
        console().progress(aboutTest(test) + QStringLiteral(": ") + suspicionText(marks));
}

void NoiseCommand::end(int exitCode) {
    if (isFinished() || m_ending)
        return;
    m_ending = true;
    if (m_session->running()) {
        // A fault the dialog stops for aborts the acquisition first, as its reaction does.
        if (exitCode == DeviceError && m_session->measuring())
            stopAcquisition();
        m_session->stop(plateRemoved()            ? NoiseSession::Ending::Removed
                        : exitCode == DeviceError ? NoiseSession::Ending::TimedOut
                                                  : NoiseSession::Ending::Stopped);
    }
    // The plate's settings that could not be put back are told, and make it a device error.
    if (exitCode == Success && m_prompt.messagesTold() > 0)
        exitCode = DeviceError;
    finish(keepResults() ? exitCode : FileError);
}

bool NoiseCommand::keepResults() {
    const QString requested = resultPath();
    const QStringList places = rescuePlaces(requested);
    m_prompt.offerPlaces(places);
    // The first try saves again where the results belong, then each takes the next place.
    bool kept = m_session->mayLeave(true, plateRemoved());
    for (qsizetype left = places.size(); !kept && left > 0; --left)
        kept = m_session->mayLeave(true, plateRemoved());
    if (kept && resultPath() == requested)
        return true;
    console().error(
        kept ? aboutPlate(QStringLiteral("the results could not be saved in %1; saved in %2 "
                                         "instead"))
                   .arg(QDir::toNativeSeparators(requested), QDir::toNativeSeparators(resultPath()))
             : aboutPlate(QStringLiteral("the results could not be saved in %1 nor in a rescue "
                                         "place: they are lost"))
                   .arg(QDir::toNativeSeparators(requested)));
    return false;
}

} // namespace kx::cli
