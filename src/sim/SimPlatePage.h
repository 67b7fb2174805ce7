#pragma once

#include <QList>
#include <QPointF>
#include <QWidget>
#include <array>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace kx {

class PlateTopView;
class SimDriver;
class SimPlate;

// The bench for one simulated plate: what rests on it, its cable and faults, its temperature,
// and its true matrix beside the stored one. Every action goes through the simulator's own
// operations, the ones scenario events use; the page only shows the plate's state.
class SimPlatePage : public QWidget {
    Q_OBJECT
public:
    SimPlatePage(SimDriver& driver, SimPlate& plate, QWidget* parent = nullptr);

    SimPlate& plate() const { return m_plate; }
    void setGuidePoints(const QList<QPointF>& points);
    // Brings the shown state up to the simulator's.
    void refresh();

    PlateTopView* picPlate;
    QLineEdit* txtMass;
    QLineEdit* txtX;
    QLineEdit* txtY;
    QPushButton* cmdPlace;
    QPushButton* cmdUnload;
    QLineEdit* txtPersonMass;
    QRadioButton* optStanding;
    QRadioButton* optSwaying;
    QPushButton* cmdPerson;
    QListWidget* lstLoads;
    QLabel* lblConnection;
    QPushButton* cmdUnplug;
    QPushButton* cmdPlugIn;
    QPushButton* cmdNotResponding;
    QPushButton* cmdReadTimeout;
    QPushButton* cmdWriteTimeout;
    QPushButton* cmdOverrun;
    QPushButton* cmdClipping;
    QLineEdit* txtFailMessage;
    QPushButton* cmdFailNext;
    QPushButton* cmdRecover;
    QLineEdit* txtAmbient;
    QLabel* lblTemperature;
    QTableWidget* flxgrdTrue;
    QTableWidget* flxgrdStored;
    QTableWidget* flxgrdDifference;

Q_SIGNALS:
    // A box's text was refused; the box shows its last accepted value again.
    void refused(const QString& why);

private:
    QWidget* buildLoads();
    QWidget* buildConnection();
    QWidget* buildClimate();
    QWidget* buildMatrices();
    QPushButton* makeButton(const char* objectName, const QString& caption);
    QLineEdit* makeBox(const char* objectName, const QString& caption, const QString& value);
    QTableWidget* makeMatrixGrid(const char* objectName, const QString& caption);

    void placeWeightAt(QPointF plate);
    void placeWeightFromBoxes();
    void placePerson();
    void setAmbient();
    void refreshMatrices();

    SimDriver& m_driver;
    SimPlate& m_plate;
};

} // namespace kx
