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
class QTabWidget;
class QTableWidget;

namespace kx {

class PlateTopView;
class SimDriver;
class SimPlate;

// The bench for one simulated plate: what rests on it, its temperature, how far its stored
// matrix is off over the top, its true matrix beside the stored one, and its cable and faults.
// Every action goes through the simulator's own operations, the ones scenario events use; the page
// only shows the plate's state.
class SimPlatePage : public QWidget {
    Q_OBJECT
public:
    SimPlatePage(SimDriver& driver, SimPlate& plate, QWidget* parent = nullptr);

    // The centre-of-pressure and Fz errors of the stored matrix are given for this load.
    static constexpr double ErrorFiguresKg = 25;

    SimPlate& plate() const { return m_plate; }
    void setGuidePoints(const QList<QPointF>& points);
    const QList<QPointF>& guidePoints() const;
    void setCurrentGuide(int index);
    // Moves the weight to guide point `index` (from 0): everything comes off, and the mass of
    // the Mass box goes on there, as when a weight is carried to the next calibration point.
    void placeAtGuide(int index);
    void unload();
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
    QTabWidget* tabDetails;
    QLabel* lblMatrixErrors;
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
    QWidget* buildStoredMatrix();
    QWidget* buildTrueAndStored();
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
