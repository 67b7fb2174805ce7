#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace kx {

class SimPlatePage;

// What loading a plate for a calibration takes, in a small window that stays on top of the
// program's dialogs: the weight carried to each numbered calibration point, and Unload for
// the zero. It works on one plate's bench page and shows the point a calibration is at.
class BenchLoadingStrip : public QWidget {
    Q_OBJECT
public:
    explicit BenchLoadingStrip(QWidget* parent = nullptr);

    // The page whose plate is loaded; its guide points give the buttons. Null for none.
    void follow(SimPlatePage* page);
    SimPlatePage* page() const { return m_page; }
    // The calibration's current point (from 0), shown pressed; -1 for none.
    void setCurrentPoint(int index);
    // Brings the plate's name, mass and points up to the page's.
    void refresh();

    QLabel* lblPlate;
    QList<QPushButton*> cmdPoint; // "1", "2", ...
    QPushButton* cmdUnload;
    QPushButton* cmdBench;

Q_SIGNALS:
    void benchWanted();

private:
    void rebuildPoints();

    QPointer<SimPlatePage> m_page;
    QHBoxLayout* m_points;
    int m_current = -1;
};

} // namespace kx
