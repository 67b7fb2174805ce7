#pragma once

#include <QKeySequence>
#include <QList>
#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace kx {

class BenchLoadingStrip;
class Clock;
class ScaledClock;
class SimDriver;
class SimPlatePage;
class Timer;

// "Simulated Plates": the training bench, a top-level window of its own that stays usable
// while the tool dialogs hide the main window. One page per simulated plate, the site's
// gravity and the speed of time above them, and a loading strip that stays on top of the
// dialogs. It shows the simulator's state, refreshed every RefreshMs of `clock` while shown,
// and acts only through the simulator's operations. When the driver goes, the window goes.
class frmSimBench : public QWidget {
    Q_OBJECT
public:
    static constexpr int RefreshMs = 250;
    // Below this share of the speed asked for, the bench says the machine cannot keep up.
    static constexpr double KeepsUpAbove = 0.9;
    // Opens the bench from the window it is installed on (see installShortcut).
    static QKeySequence shortcut() { return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_B); }

    frmSimBench(SimDriver& driver, Clock& clock, QWidget* parent = nullptr);

    // Numbered marks on every plate's top, in plate coordinates (metres).
    void setGuidePoints(const QList<QPointF>& points);
    // Where the marks come from (the calibration's points): asked again whenever the bench is
    // shown and when a calibration point is shown, since the calibration may move them.
    void setGuidePointSource(std::function<QList<QPointF>()> source);
    // The time control: the speed of the plates' clock, and the speed it achieves.
    void setTimeControl(ScaledClock& clock);
    // The page of the plate enumerated with this serial number, or null.
    SimPlatePage* page(const QString& serial) const;
    // Makes shortcut() on `host` show the bench and bring it to the front.
    void installShortcut(QWidget& host);
    // Puts the bench beside `window` when that first shows (see SideBySide).
    void placeBeside(QWidget& window);
    void bringToFront();
    BenchLoadingStrip* loadingStrip() const { return m_strip; }

    QComboBox* cbxSpeed;
    QLabel* lblSpeed;
    QLineEdit* txtGravity;
    QPushButton* cmdLoadingStrip;
    QTabWidget* tabPlates;
    QLabel* lblMessage;

public Q_SLOTS:
    // The point (from 0) a calibration of the plate with this serial number is at: ringed on
    // its top and pressed on the loading strip, which comes up while the bench is open.
    // -1 clears it.
    void showCalibrationPoint(const QString& serial, int index);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildTimeControl();
    void setGravity();
    void refresh();
    void refreshSpeed();
    void showSpeed(double speed);
    void loadGuidePoints();
    void showLoadingStrip();
    void placeBesideNow();
    void showRefusal(const QString& why);

    SimDriver* m_driver;
    Clock& m_clock;
    QList<SimPlatePage*> m_pages;
    Timer* m_refresh;
    QPointer<ScaledClock> m_time;
    std::function<QList<QPointF>()> m_guideSource;
    BenchLoadingStrip* m_strip;
    QPointer<QWidget> m_besideOf;
};

} // namespace kx
