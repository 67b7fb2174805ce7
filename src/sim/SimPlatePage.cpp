#include "sim/SimPlatePage.h"

#include "device/TextBoxValidation.h"
#include "sim/BenchInput.h"
#include "sim/MatrixDifference.h"
#include "sim/MatrixErrors.h"
#include "sim/PlateTopGeometry.h"
#include "sim/PlateTopView.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kx {

namespace {

const BenchRange WeightMass{QStringLiteral("Mass"), 0.01, 1000, QStringLiteral("kg")};
const BenchRange PlaceX{QStringLiteral("X"), PlateTopGeometry::MinX, PlateTopGeometry::MaxX,
                        QStringLiteral("m")};
const BenchRange PlaceY{QStringLiteral("Y"), PlateTopGeometry::MinY, PlateTopGeometry::MaxY,
                        QStringLiteral("m")};
const BenchRange PersonMass{QStringLiteral("Person"), 10, 300, QStringLiteral("kg")};
const BenchRange Ambient{QStringLiteral("Ambient"), -20, 60, QStringLiteral("°C")};

QString metres(double value) {
    return QString::number(value, 'f', 3);
}

QString millimetres(double metres) {
    return QString::number(metres * 1000, 'f', 2);
}

QString matrixErrorsText(const std::optional<MatrixErrors>& errors) {
    if (!errors)
        return SimPlatePage::tr("The stored matrix does not weigh a load: the plate is not "
                                "calibrated.");
    return SimPlatePage::tr("Against the true matrix, %1 kg anywhere on the top:\n\n"
                            "Centre of pressure\n%2 mm RMS, %3 mm worst\n\n"
                            "Fz\n%4 N RMS, %5 N worst")
        .arg(SimPlatePage::ErrorFiguresKg)
        .arg(millimetres(errors->copRms), millimetres(errors->copWorst),
             QString::number(errors->fzRms, 'f', 2), QString::number(errors->fzWorst, 'f', 2));
}

QString describe(const PlateLoads::Placed& load) {
    return QStringLiteral("%1 kg %2 at (%3, %4) m")
        .arg(QString::number(load.kilograms, 'f', 2),
             load.person ? QStringLiteral("person") : QStringLiteral("weight"), metres(load.x),
             metres(load.y));
}

} // namespace

SimPlatePage::SimPlatePage(SimDriver& driver, SimPlate& plate, QWidget* parent)
    : QWidget(parent)
    , m_driver(driver)
    , m_plate(plate) {
    picPlate = new PlateTopView(this);
    lstLoads = new QListWidget(this);
    lstLoads->setObjectName(QStringLiteral("lstLoads"));
    lstLoads->setAccessibleName(tr("Loads on the plate"));
    lstLoads->setMaximumHeight(90);

    auto* pictureColumn = new QVBoxLayout;
    pictureColumn->addWidget(new QLabel(tr("Click the top to place the mass there:"), this));
    pictureColumn->addWidget(picPlate, 1);
    pictureColumn->addWidget(new QLabel(tr("Loads on the plate:"), this));
    pictureColumn->addWidget(lstLoads);

    auto* controlColumn = new QVBoxLayout;
    controlColumn->addWidget(buildLoads());
    controlColumn->addWidget(buildClimate());
    controlColumn->addStretch();

    // Kept narrow enough to stand beside the main window on a small screen.
    tabDetails = new QTabWidget(this);
    tabDetails->setObjectName(QStringLiteral("tabDetails"));
    tabDetails->setAccessibleName(tr("Matrix, cable and faults"));
    tabDetails->addTab(buildStoredMatrix(), tr("Stored matrix"));
    tabDetails->addTab(buildTrueAndStored(), tr("True and stored"));
    tabDetails->addTab(buildConnection(), tr("Cable and faults"));

    auto* top = new QHBoxLayout;
    top->addLayout(pictureColumn, 1);
    top->addLayout(controlColumn);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addWidget(tabDetails);

    connect(picPlate, &PlateTopView::clickedAt, this, &SimPlatePage::placeWeightAt);
    refresh();
}

QPushButton* SimPlatePage::makeButton(const char* objectName, const QString& caption) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QLatin1String(objectName));
    button->setAccessibleName(QString(caption).remove(u'&'));
    return button;
}

QLineEdit* SimPlatePage::makeBox(const char* objectName, const QString& caption,
                                 const QString& value) {
    auto* box = new QLineEdit(this);
    box->setObjectName(QLatin1String(objectName));
    box->setAccessibleName(caption);
    showNumber(*box, value);
    return box;
}

QWidget* SimPlatePage::buildLoads() {
    auto* group = new QGroupBox(tr("Loads"), this);
    txtMass = makeBox("txtMass", tr("Mass (kg)"), QStringLiteral("25"));
    txtX = makeBox("txtX", tr("X (m)"), metres(0));
    txtY = makeBox("txtY", tr("Y (m)"), metres(0.178));
    cmdPlace = makeButton("cmdPlace", tr("Place"));
    cmdUnload = makeButton("cmdUnload", tr("Unload"));
    txtPersonMass = makeBox("txtPersonMass", tr("Person (kg)"), QStringLiteral("75"));
    optStanding = new QRadioButton(tr("Standing"), group);
    optStanding->setObjectName(QStringLiteral("optStanding"));
    optStanding->setAccessibleName(tr("Standing"));
    optStanding->setChecked(true);
    optSwaying = new QRadioButton(tr("Swaying"), group);
    optSwaying->setObjectName(QStringLiteral("optSwaying"));
    optSwaying->setAccessibleName(tr("Swaying"));
    cmdPerson = makeButton("cmdPerson", tr("Step on"));

    auto* form = new QFormLayout;
    form->addRow(tr("Mass (kg)"), txtMass);
    auto* point = new QHBoxLayout;
    point->addWidget(txtX);
    point->addWidget(new QLabel(tr("Y (m)"), group));
    point->addWidget(txtY);
    form->addRow(tr("X (m)"), point);
    auto* weightButtons = new QHBoxLayout;
    weightButtons->addWidget(cmdPlace);
    weightButtons->addWidget(cmdUnload);
    form->addRow(weightButtons);
    form->addRow(tr("Person (kg)"), txtPersonMass);
    auto* stance = new QHBoxLayout;
    stance->addWidget(optStanding);
    stance->addWidget(optSwaying);
    stance->addWidget(cmdPerson);
    form->addRow(stance);
    group->setLayout(form);

    connect(cmdPlace, &QPushButton::clicked, this, &SimPlatePage::placeWeightFromBoxes);
    connect(cmdUnload, &QPushButton::clicked, this, &SimPlatePage::unload);
    connect(cmdPerson, &QPushButton::clicked, this, &SimPlatePage::placePerson);
    return group;
}

QWidget* SimPlatePage::buildConnection() {
    auto* group = new QWidget(this);
    lblConnection = new QLabel(group);
    lblConnection->setObjectName(QStringLiteral("lblConnection"));
    cmdUnplug = makeButton("cmdUnplug", tr("Unplug"));
    cmdPlugIn = makeButton("cmdPlugIn", tr("Plug in"));
    cmdNotResponding = makeButton("cmdNotResponding", tr("Not responding"));
    cmdReadTimeout = makeButton("cmdReadTimeout", tr("Read time-out"));
    cmdWriteTimeout = makeButton("cmdWriteTimeout", tr("Write time-out"));
    cmdOverrun = makeButton("cmdOverrun", tr("Buffer overrun"));
    cmdClipping = makeButton("cmdClipping", tr("Clipping"));
    txtFailMessage = new QLineEdit(tr("Simulated failure at the bench."), group);
    txtFailMessage->setObjectName(QStringLiteral("txtFailMessage"));
    txtFailMessage->setAccessibleName(tr("Failure message"));
    cmdFailNext = makeButton("cmdFailNext", tr("Fail next call"));
    cmdRecover = makeButton("cmdRecover", tr("Recover"));

    // The state shares a row with the cable's buttons and the failure message with the button
    // that uses it, so that the bench fits a laptop's screen.
    auto* grid = new QGridLayout(group);
    grid->addWidget(lblConnection, 0, 0);
    grid->addWidget(cmdUnplug, 0, 1);
    grid->addWidget(cmdPlugIn, 0, 2);
    grid->addWidget(cmdNotResponding, 1, 0);
    grid->addWidget(cmdReadTimeout, 1, 1);
    grid->addWidget(cmdWriteTimeout, 1, 2);
    grid->addWidget(cmdOverrun, 2, 0);
    grid->addWidget(cmdClipping, 2, 1);
    grid->addWidget(cmdRecover, 2, 2);
    grid->addWidget(cmdFailNext, 3, 0);
    grid->addWidget(txtFailMessage, 3, 1, 1, 2);

    // The plate's serial number may change under the bench, so it is looked up on each click.
    const auto act = [this](auto action) {
        return [this, action] {
            action(m_plate.serial());
            refresh();
        };
    };
    connect(cmdUnplug, &QPushButton::clicked, this,
            act([this](const QString& serial) { m_driver.unplug(serial); }));
    connect(cmdPlugIn, &QPushButton::clicked, this,
            act([this](const QString& serial) { m_driver.plugIn(serial); }));
    connect(cmdNotResponding, &QPushButton::clicked, this,
            act([this](const QString& serial) { m_driver.makeNotResponding(serial); }));
    const std::array<std::pair<QPushButton*, PlateFault>, 4> faults{{
        {cmdReadTimeout, PlateFault::ReadTimeout},
        {cmdWriteTimeout, PlateFault::WriteTimeout},
        {cmdOverrun, PlateFault::BufferOverRun},
        {cmdClipping, PlateFault::DataClipped},
    }};
    for (const auto& [button, fault] : faults)
        connect(button, &QPushButton::clicked, this,
                act([this, f = fault](const QString& serial) { m_driver.inject(serial, f); }));
    connect(cmdFailNext, &QPushButton::clicked, this,
            [this] { m_plate.failures().failNextCall(txtFailMessage->text()); });
    connect(cmdRecover, &QPushButton::clicked, this, [this] { m_plate.failures().clear(); });
    return group;
}

QWidget* SimPlatePage::buildClimate() {
    auto* group = new QGroupBox(tr("Temperature"), this);
    txtAmbient = makeBox("txtAmbient", tr("Ambient (°C)"),
                         QString::number(m_plate.ambientTemperature(), 'f', 1));
    lblTemperature = new QLabel(group);
    lblTemperature->setObjectName(QStringLiteral("lblTemperature"));
    auto* row = new QHBoxLayout(group);
    row->addWidget(new QLabel(tr("Ambient (°C)"), group));
    row->addWidget(txtAmbient);
    row->addWidget(new QLabel(tr("plate now"), group));
    row->addWidget(lblTemperature);
    TextBoxValidation::attach(txtAmbient, [this] { setAmbient(); });
    return group;
}

QTableWidget* SimPlatePage::makeMatrixGrid(const char* objectName, const QString& caption) {
    auto* grid = new QTableWidget(3, 3, this);
    grid->setObjectName(QLatin1String(objectName));
    grid->setAccessibleName(caption);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionMode(QAbstractItemView::NoSelection);
    grid->setFocusPolicy(Qt::NoFocus);
    grid->setHorizontalHeaderLabels({tr("V1"), tr("V2"), tr("V3")});
    grid->setVerticalHeaderLabels({tr("Fz"), tr("Mx"), tr("My")});
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid->setWordWrap(false);
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            auto* cell = new QTableWidgetItem;
            cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, cell);
        }
    const int rowsHeight = grid->verticalHeader()->length() + grid->horizontalHeader()->height();
    grid->setFixedHeight(rowsHeight + 2 * grid->frameWidth());
    grid->setMinimumWidth(250);
    return grid;
}

QWidget* SimPlatePage::buildStoredMatrix() {
    auto* tab = new QWidget(this);
    flxgrdDifference =
        makeMatrixGrid("flxgrdDifference", tr("Difference (% of the row's largest)"));
    lblMatrixErrors = new QLabel(tab);
    lblMatrixErrors->setObjectName(QStringLiteral("lblMatrixErrors"));
    lblMatrixErrors->setWordWrap(true);
    lblMatrixErrors->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto* grid = new QGridLayout(tab);
    grid->addWidget(new QLabel(flxgrdDifference->accessibleName(), tab), 0, 0);
    grid->addWidget(flxgrdDifference, 1, 0);
    grid->addWidget(lblMatrixErrors, 0, 1, 2, 1);
    lblMatrixErrors->setMinimumWidth(lblMatrixErrors->fontMetrics().horizontalAdvance(
        QStringLiteral("Against the true matrix, 25 kg")));
    grid->setColumnStretch(1, 1);
    return tab;
}

QWidget* SimPlatePage::buildTrueAndStored() {
    auto* tab = new QWidget(this);
    flxgrdTrue = makeMatrixGrid("flxgrdTrue", tr("True (hidden)"));
    flxgrdStored = makeMatrixGrid("flxgrdStored", tr("Stored in the plate"));
    auto* grid = new QGridLayout(tab);
    const std::array<QTableWidget*, 2> grids{flxgrdTrue, flxgrdStored};
    for (int i = 0; i < 2; ++i) {
        QTableWidget* matrix = grids[static_cast<std::size_t>(i)];
        grid->addWidget(new QLabel(matrix->accessibleName(), tab), 0, i);
        grid->addWidget(matrix, 1, i);
    }
    grid->addWidget(new QLabel(tr("N or N·m per V at 1 V excitation"), tab), 2, 0, 1, 2);
    return tab;
}

void SimPlatePage::setGuidePoints(const QList<QPointF>& points) {
    picPlate->setGuidePoints(points);
}

const QList<QPointF>& SimPlatePage::guidePoints() const {
    return picPlate->guidePoints();
}

void SimPlatePage::setCurrentGuide(int index) {
    picPlate->setCurrentGuide(index);
}

void SimPlatePage::placeAtGuide(int index) {
    if (index < 0 || index >= guidePoints().size())
        return;
    const QPointF point = guidePoints()[index];
    showNumber(*txtX, metres(point.x()));
    showNumber(*txtY, metres(point.y()));
    if (!readBenchNumber(txtMass->text(), WeightMass).value) {
        placeWeightFromBoxes(); // says why, and places nothing
        return;
    }
    m_plate.unload();
    placeWeightFromBoxes();
}

void SimPlatePage::unload() {
    m_plate.unload();
    refresh();
}

void SimPlatePage::placeWeightAt(QPointF plate) {
    showNumber(*txtX, metres(plate.x()));
    showNumber(*txtY, metres(plate.y()));
    placeWeightFromBoxes();
}

void SimPlatePage::placeWeightFromBoxes() {
    const auto refuse = [this](const QString& why) { Q_EMIT refused(why); };
    const std::optional<double> mass = takeNumber(*txtMass, WeightMass, refuse);
    const std::optional<double> x = takeNumber(*txtX, PlaceX, refuse);
    const std::optional<double> y = takeNumber(*txtY, PlaceY, refuse);
    if (!mass || !x || !y)
        return;
    m_plate.placeWeight(*mass, *x, *y);
    refresh();
}

void SimPlatePage::placePerson() {
    const auto refuse = [this](const QString& why) { Q_EMIT refused(why); };
    const std::optional<double> mass = takeNumber(*txtPersonMass, PersonMass, refuse);
    const std::optional<double> x = takeNumber(*txtX, PlaceX, refuse);
    const std::optional<double> y = takeNumber(*txtY, PlaceY, refuse);
    if (!mass || !x || !y)
        return;
    m_plate.placePerson(*mass, *x, *y,
                        optSwaying->isChecked() ? PlateLoads::Stance::Swaying
                                                : PlateLoads::Stance::Standing);
    refresh();
}

void SimPlatePage::setAmbient() {
    if (const std::optional<double> celsius =
            takeNumber(*txtAmbient, Ambient, [this](const QString& why) { Q_EMIT refused(why); }))
        m_plate.setAmbientTemperature(*celsius);
    refresh();
}

void SimPlatePage::refresh() {
    const std::vector<PlateLoads::Placed> loads = m_plate.loads().onPlate(m_plate.now());
    picPlate->setLoads(loads);
    lstLoads->clear();
    for (const PlateLoads::Placed& load : loads)
        lstLoads->addItem(describe(load));

    const bool plugged = m_plate.isPlugged();
    const bool answering = plugged && m_plate.isResponding();
    lblConnection->setText(!plugged    ? tr("Unplugged")
                           : answering ? tr("Plugged in")
                                       : tr("Plugged in, not responding"));
    cmdUnplug->setEnabled(plugged);
    cmdPlugIn->setEnabled(!plugged);
    for (QPushButton* button :
         {cmdNotResponding, cmdReadTimeout, cmdWriteTimeout, cmdOverrun, cmdClipping})
        button->setEnabled(answering);

    lblTemperature->setText(QStringLiteral("%1 °C").arg(m_plate.currentTemperature(), 0, 'f', 2));
    refreshMatrices();
}

void SimPlatePage::refreshMatrices() {
    const Matrix3& truth = m_plate.truth().trueMatrix;
    const Matrix3 stored = m_plate.storedMatrix();
    lblMatrixErrors->setText(matrixErrorsText(
        MatrixErrors::overTop(truth, stored, ErrorFiguresKg * m_plate.loads().gravity())));
    const Matrix3 difference = differencePercent(truth, stored);
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
            const int row = int(r);
            const int column = int(c);
            flxgrdTrue->item(row, column)->setText(QString::number(truth[r][c], 'f', 3));
            flxgrdStored->item(row, column)->setText(QString::number(stored[r][c], 'f', 3));
            flxgrdDifference->item(row, column)
                ->setText(QStringLiteral("%1 %").arg(difference[r][c], 0, 'f', 2));
        }
}

} // namespace kx
