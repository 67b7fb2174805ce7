#pragma once

#include <QKeySequence>
#include <QList>
#include <QPointF>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTabWidget;

namespace kx {

class Clock;
class SimDriver;
class SimPlatePage;
class Timer;

// "Simulated Plates": the training bench, a top-level window of its own that stays usable
// while the tool dialogs hide the main window. One page per simulated plate, the site's
// gravity above them. It shows the simulator's state, refreshed every RefreshMs while shown,
// and acts only through the simulator's operations. When the driver goes, the window goes.
class frmSimBench : public QWidget {
    Q_OBJECT
public:
    static constexpr int RefreshMs = 250;
    // Opens the bench from the window it is installed on (see installShortcut).
    static QKeySequence shortcut() { return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_B); }

    frmSimBench(SimDriver& driver, Clock& clock, QWidget* parent = nullptr);

    // Faint marks on every plate's top, in plate coordinates (metres).
    void setGuidePoints(const QList<QPointF>& points);
    // The page of the plate enumerated with this serial number, or null.
    SimPlatePage* page(const QString& serial) const;
    // Makes shortcut() on `host` show the bench and bring it to the front.
    void installShortcut(QWidget& host);
    void bringToFront();

    QLineEdit* txtGravity;
    QTabWidget* tabPlates;
    QLabel* lblMessage;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void setGravity();
    void refresh();
    void showRefusal(const QString& why);

    SimDriver* m_driver;
    QList<SimPlatePage*> m_pages;
    Timer* m_refresh;
};

} // namespace kx
