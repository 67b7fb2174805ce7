#include "noise/NoiseSession.h"

#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseTimeline.h"
#include "noise/LoadChanges.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Prompt.h"
#include "support/Rounding.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace kx {

namespace {

namespace s = strings::noise;

// The library's settling option of a zero acquisition, passed as the plate expects it.
constexpr qint32 ZeroOption = 30;
constexpr int TickMs = 1000;

QString text(int id) {
    return strings::text(id);
}

} // namespace

NoiseSession::NoiseSession(Clock& clock, Prompt& prompt, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_prompt(prompt)
    , m_waitTimer(clock.createTimer(this))
    , m_watchdog(clock.createTimer(this)) {
    m_waitTimer->setObjectName(QStringLiteral("Timer1"));
    m_watchdog->setObjectName(QStringLiteral("tmrWatchdog"));
    connect(m_waitTimer, &Timer::timeout, this, &NoiseSession::waitTick);
    connect(m_watchdog, &Timer::timeout, this, &NoiseSession::watchdogExpired);
}

bool NoiseSession::open(PlateDevice* plate, const IniFile& profile,
                        const QString& documentsFolder) {
    CreateFolderPath(FolderOfPath(profile.path()));
    m_plan = NoisePlan::read(profile);
    m_opened = true;
    m_results = NoiseResults(m_plan.channels, m_plan.frequencyCount(), m_plan.excitationCount());
    m_sequence = NoiseSequence(m_plan.frequencyCount(), m_plan.excitationCount());
    m_plate = plate;
    const bool ready = plate && callPlate([&] {
                           m_serial = plate->SerialNumber();
                           chooseResultFile(firstFreeNoiseFile(documentsFolder, m_serial));
                           m_savedFrequency = plate->SampleFrequency(Which::Current);
                           m_savedExcitation = plate->GageVoltage(Which::Current);
                       });
    if (!ready) {
        m_plate = nullptr;
        setState(State::Idle, text(s::NoPlatform));
        return false;
    }
    connect(plate, &PlateDevice::ZeroProgress, this, &NoiseSession::zeroProgress);
    connect(plate, &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& r1, const ChannelValues& r2,
                   const ChannelValues& r3) { zeroDone(r1, r2, r3); });
    connect(plate, &PlateDevice::BufferOverRun, this,
            [this] { plateFault(NoiseResults::Overrun); });
    connect(plate, &PlateDevice::DataClipped, this, [this] { plateFault(NoiseResults::Clipping); });
    setState(State::Idle, text(s::Ready));
    return true;
}

void NoiseSession::chooseResultFile(const QString& path) {
    m_resultFile = NoiseResultFile(path);
    m_pictureFile = NoiseResultFile(besideResultFile(path, ".png"));
    m_log.setPath(besideResultFile(path, ".log"));
    m_folder = QFileInfo(path).path();
}

void NoiseSession::savePlan(const IniFile& profile) const {
    if (m_opened)
        m_plan.write(profile);
}

// --- The run ---------------------------------------------------------------------------------

bool NoiseSession::start() {
    if (!m_plate || running())
        return false;
    if (QString why; !folderUsable(why)) {
        Question question{text(s::FolderQuestion).arg(QDir::toNativeSeparators(m_folder), why),
                          {text(s::StartAnyway), text(s::DoNotStart)}};
        question.defaultChoice = question.escapeChoice = 1;
        if (m_prompt.ask(question) != 0)
            return false;
    }
    m_results.clear();
    m_sequence.restart();
    m_log.clear();
    Q_EMIT runStarted();
    log(text(s::LogStart)
            .arg(m_serial, QFileInfo(resultPath()).fileName())
            .arg(m_plan.frequencyCount())
            .arg(m_plan.excitationCount())
            .arg(m_plan.channels)
            .arg(formatGeneral(m_plan.testDuration)));
    prepareTest();
    return true;
}

bool NoiseSession::folderUsable(QString& why) const {
    if (!QDir().mkpath(m_folder))
        why = text(s::FolderNotMade);
    else if (!FolderIsWritable(m_folder))
        why = text(s::FolderNotWritable);
    return why.isEmpty();
}

void NoiseSession::prepareTest() {
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    const bool set = callPlate([&] {
        m_plate->SetSampleFrequency(Which::Current, m_plan.frequencies[f]);
        m_plate->SetGageVoltage(Which::Current, m_plan.excitations[e]);
        // The file shows what the plate took, not what was asked.
        m_plan.frequencies[f] = m_plate->SampleFrequency(Which::Current);
        m_plan.excitations[e] = m_plate->GageVoltage(Which::Current);
    });
    if (!set) {
        stop(Ending::TimedOut);
        return;
    }
    m_phaseStart = m_clock.tickCount();
    m_waitTimer->start(TickMs);
    setState(State::Waiting, text(s::WaitingToStart));
}

void NoiseSession::waitTick() {
    const quint32 elapsed = m_clock.tickCount() - m_phaseStart;
    const float wait = m_sequence.waitSeconds(m_plan);
    if (!NoiseSequence::waitIsOver(elapsed, wait)) {
        setState(State::Waiting, m_sequence.countdownText(elapsed, wait));
        return;
    }
    m_waitTimer->stop();
    startTest();
}

void NoiseSession::startTest() {
    m_faults = NoiseResults::NotSuspect;
    m_silent = false;
    const bool started = callPlate([this] {
        const double hertz = m_plate->SampleFrequency(Which::Current);
        m_samples = std::max(1, roundHalfEven(static_cast<double>(m_plan.testDuration) * hertz));
        m_progress = 0;
        m_phaseStart = m_clock.tickCount();
        // The progress bar tells from here on.
        setState(State::Measuring, {});
        m_plate->FlushData();
        m_plate->CalibrateSelf();
        const double settled = m_plate->SampleFrequency(Which::Current);
        m_watchdog->start(2 * roundHalfEven(m_plan.testDuration * 1000.0f) + WatchdogGraceMs);
        m_plate->StartZero(m_samples, true, ZeroOption, roundHalfEven(0.5 * settled));
    });
    if (!started)
        stop(Ending::TimedOut);
}

void NoiseSession::zeroProgress(qint32 samples) {
    if (!measuring())
        return;
    m_progress = std::min(samples, m_samples);
    m_watchdog->start(m_watchdog->interval()); // the plate is alive: its time starts anew
    Q_EMIT progressed();
}

void NoiseSession::plateFault(NoiseResults::Suspicion suspicion) {
    m_faults |= suspicion; // those between tests are forgotten when the next test starts
}

void NoiseSession::zeroDone(const ChannelValues& r1, const ChannelValues& r2,
                            const ChannelValues& r3) {
    if (!measuring())
        return;
    m_watchdog->stop();
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    m_results.store(f, e, r1, r2, r3);
    m_results.mark(f, e, m_faults);
    Q_EMIT testStored(testIndex(f, e));
    if (m_faults != NoiseResults::NotSuspect)
        log(testName(f, e) + suspicionText(m_faults));
    for (const LoadChange& found : markLoadChanges(m_results, f)) {
        log(testName(found.frequency, found.excitation) + suspicionText(NoiseResults::LoadChange) +
            text(s::OnChannel).arg(found.channel + 1));
        Q_EMIT testMarked(testIndex(found.frequency, found.excitation));
    }
    saveResults();
    if (m_sequence.advance())
        prepareTest();
    else
        finish();
}

void NoiseSession::watchdogExpired() {
    m_watchdog->stop();
    if (!measuring())
        return;
    m_silent = true;
    log(text(s::LogSilent).arg(m_watchdog->interval() / 1000));
    Q_EMIT silent();
}

void NoiseSession::finish() {
    m_waitTimer->stop();
    setState(State::Idle, text(s::TestsDone));
    log(text(s::LogFinished)
            .arg(m_results.measuredCount())
            .arg(testCount())
            .arg(m_results.suspectCount()));
    saveResults();
    saveBesideResults();
    restorePlate();
    Q_EMIT runEnded();
}

void NoiseSession::stop(Ending ending) {
    if (!running())
        return;
    m_waitTimer->stop();
    m_watchdog->stop();
    if (ending == Ending::Removed)
        m_plate = nullptr;
    if (measuring() && m_plate)
        callPlate([this] { m_plate->StopAcquisition(); });
    setState(State::Idle, text(s::Ready));
    const int why = ending == Ending::Removed    ? s::LogRemoved
                    : ending == Ending::TimedOut ? s::LogTimedOut
                                                 : s::LogStopped;
    log(text(why).arg(m_results.measuredCount()).arg(testCount()));
    // What was measured is in the file already, unless its last save failed.
    if (m_resultFile.failing())
        saveResults();
    if (!m_results.empty())
        saveBesideResults();
    restorePlate();
    m_silent = false;
    Q_EMIT runEnded();
}

void NoiseSession::restorePlate() {
    if (!m_plate)
        return;
    try {
        m_plate->SetSampleFrequency(Which::Current, m_savedFrequency);
        m_plate->SetGageVoltage(Which::Current, m_savedExcitation);
    } catch (const PlateError& error) {
        log(text(s::LogNotRestored).arg(error.message()));
        // A silent plate has been reported already; it cannot take its settings back.
        if (!m_silent)
            m_prompt.critical(error.message());
    }
}

// --- Files -----------------------------------------------------------------------------------

void NoiseSession::saveResults() {
    if (m_resultFile.save(noiseResultFile(m_plan, m_results)) == NoiseResultFile::Outcome::Failed)
        logFailure(m_resultFile, s::LogResultsNotSaved);
    else if (m_log.file().failing())
        m_log.save();
    Q_EMIT changed();
}

void NoiseSession::saveBesideResults() {
    if (m_picture && m_pictureFile.save(m_picture()) == NoiseResultFile::Outcome::Failed)
        logFailure(m_pictureFile, s::LogPictureNotSaved);
    else if (m_log.file().failing())
        m_log.save();
    Q_EMIT changed();
}

void NoiseSession::logFailure(const NoiseResultFile& file, int entry) {
    log(text(entry).arg(QDir::toNativeSeparators(file.path()), file.error()));
}

void NoiseSession::log(const QString& entry) {
    m_log.add(m_clock.currentDateTime(), entry);
}

bool NoiseSession::mayLeave(bool confirmed, bool plateGone) {
    if (running()) {
        if (!plateGone && m_prompt.ask(stopQuestion()) != StopRun)
            return false;
        stop(plateGone ? Ending::Removed : Ending::Stopped);
    }
    if (m_results.empty())
        return true;
    if (m_resultFile.failing() || m_pictureFile.failing() || m_log.file().failing()) {
        saveResults();
        saveBesideResults();
    }
    if (!m_resultFile.failing())
        return true;
    if (!confirmed) {
        switch (m_prompt.ask(unsavedQuestion())) {
        case SaveElsewhere:
            break;
        case Discard:
            log(text(s::LogDiscarded));
            return true;
        default:
            return false;
        }
    }
    return saveElsewhere();
}

bool NoiseSession::saveElsewhere() {
    FileDialogRequest request;
    request.title = text(s::SaveAsTitle);
    request.filter = text(s::SaveAsFilter);
    request.defaultExtension = QStringLiteral(".TXT");
    request.initialFolder = QFileInfo(resultPath()).absolutePath();
    request.fileName = QFileInfo(resultPath()).fileName();
    request.overwritePrompt = true;
    request.pathMustExist = true;
    const std::optional<QString> path = m_prompt.saveFileName(request);
    if (!path)
        return false;
    if (m_resultFile.saveAs(*path, noiseResultFile(m_plan, m_results)) !=
        NoiseResultFile::Outcome::Saved) {
        m_prompt.critical(
            text(s::SaveAsFailed).arg(QDir::toNativeSeparators(*path), m_resultFile.error()));
        Q_EMIT changed();
        return false;
    }
    // The picture and the log go with the results.
    m_pictureFile = NoiseResultFile(besideResultFile(*path, ".png"));
    m_log.setPath(besideResultFile(*path, ".log"));
    log(text(s::LogSavedElsewhere).arg(QDir::toNativeSeparators(*path)));
    saveBesideResults();
    return true;
}

// --- What the view shows ---------------------------------------------------------------------

QString NoiseSession::fileStatus() const {
    if (m_resultFile.failing())
        return text(running() ? s::FileNotSaved : s::FileNotSavedOk).arg(m_resultFile.error());
    if (m_pictureFile.failing())
        return text(s::PictureNotSaved).arg(m_pictureFile.error());
    if (m_log.file().failing())
        return text(s::LogNotSaved).arg(m_log.file().error());
    return {};
}

QString NoiseSession::progressText() const {
    if (!running())
        return {};
    return NoiseTimeline::at(m_plan, m_sequence, measuring(), m_clock.tickCount() - m_phaseStart)
        .text(m_clock.currentDateTime());
}

QString NoiseSession::listLine(qsizetype test) const {
    const qsizetype nF = m_plan.frequencyCount();
    return noiseListLine(m_plan, m_results, test % nF, test / nF);
}

Question NoiseSession::stopQuestion() const {
    const int texts = m_resultFile.failing() ? s::StopQuestionUnsaved : s::StopQuestion;
    Question question{text(texts).arg(m_results.measuredCount()).arg(testCount()),
                      {text(s::StopRun), text(s::KeepRunning)}};
    question.defaultChoice = question.escapeChoice = KeepRunning;
    return question;
}

Question NoiseSession::unsavedQuestion() const {
    Question question{
        text(s::UnsavedQuestion).arg(QDir::toNativeSeparators(resultPath()), m_resultFile.error()),
        {text(s::SaveElsewhere), text(s::DiscardResults), text(s::GoBack)}};
    question.defaultChoice = SaveElsewhere;
    question.escapeChoice = GoBack;
    return question;
}

QString NoiseSession::testName(qsizetype frequency, qsizetype excitation) const {
    return text(s::LogTest)
        .arg(testIndex(frequency, excitation) + 1)
        .arg(testCount())
        .arg(formatNumber(m_plan.excitations[excitation], u"0.000"),
             formatNumber(m_plan.frequencies[frequency], u"0.000"));
}

qsizetype NoiseSession::testIndex(qsizetype frequency, qsizetype excitation) const {
    return excitation * m_plan.frequencyCount() + frequency;
}

void NoiseSession::setState(State state, const QString& status) {
    m_state = state;
    m_status = status;
    Q_EMIT changed();
}

bool NoiseSession::callPlate(const std::function<void()>& calls) {
    return runDeviceHandler(m_prompt, calls);
}

} // namespace kx
