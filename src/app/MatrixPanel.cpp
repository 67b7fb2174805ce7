#include "app/MatrixPanel.h"

#include "app/PlateInput.h"
#include "device/TextBoxValidation.h"
#include "support/NumberFormat.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kx {

namespace {
constexpr auto CellFormat = u"0.000";
}

MatrixPanel::MatrixPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent)
    : PlatePanel("frmCalibration", 350, prompt, plate, parent)
    , lblCalMatCaption(makeLabel("lblCalMatCaption", 360))
    , flxgrdCalibrationMat(new QTableWidget(Size, Size, this))
    , txtEditCalMat(new QLineEdit(flxgrdCalibrationMat->viewport())) {
    lblCalMatCaption->setWordWrap(true);

    QTableWidget* grid = flxgrdCalibrationMat;
    grid->setObjectName(QStringLiteral("flxgrdCalibrationMat"));
    grid->setAccessibleName(plainCaption(350));
    grid->horizontalHeader()->hide();
    grid->verticalHeader()->hide();
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    for (int r = 0; r < Size; ++r) {
        for (int c = 0; c < Size; ++c) {
            auto* item = new QTableWidgetItem;
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, item);
        }
    }
    connect(grid, &QTableWidget::cellClicked, this, &MatrixPanel::openEditor);
    connect(grid, &QTableWidget::cellActivated, this, &MatrixPanel::openEditor);

    txtEditCalMat->setObjectName(QStringLiteral("txtEditCalMat"));
    txtEditCalMat->setAlignment(Qt::AlignRight);
    txtEditCalMat->setAccessibleName(plainCaption(350) + QStringLiteral(" cell"));
    txtEditCalMat->hide();
    TextBoxValidation::attach(
        txtEditCalMat, [this] { validateEditor(); }, [this] { txtEditCalMat->hide(); });
    // Enter hands the focus back to the grid, which validates the editor as it leaves; the key
    // goes no further, or the grid would take it as activating the cell again.
    txtEditCalMat->installEventFilter(this);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblCalMatCaption);
    layout->addWidget(grid);
}

bool MatrixPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtEditCalMat && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            flxgrdCalibrationMat->setFocus(Qt::OtherFocusReason);
            return true;
        }
    }
    return PlatePanel::eventFilter(watched, event);
}

void MatrixPanel::fillRow(PlateDevice& plate, int row, TypedText typed) {
    for (int c = 0; c < Size; ++c) {
        if (typed == TypedText::Replace || !m_typed[row][c])
            showCell(plate, row, c);
    }
}

void MatrixPanel::enterCell(int row, int column, const QString& text) {
    flxgrdCalibrationMat->setCurrentCell(row, column);
    openEditor();
    txtEditCalMat->setText(text);
    validateEditor();
}

void MatrixPanel::showCell(PlateDevice& plate, int row, int column) {
    flxgrdCalibrationMat->item(row, column)
        ->setText(formatNumber(plate.MatrixElement(row, column), CellFormat));
    m_typed[row][column] = false;
}

void MatrixPanel::openEditor() {
    QTableWidget* grid = flxgrdCalibrationMat;
    const int row = grid->currentRow();
    const int column = grid->currentColumn();
    if (row < 0 || column < 0)
        return;
    txtEditCalMat->setGeometry(grid->visualRect(grid->model()->index(row, column)));
    txtEditCalMat->setAccessibleName(
        plainCaption(350) + QStringLiteral(" row %1 column %2").arg(row + 1).arg(column + 1));
    txtEditCalMat->setText(grid->item(row, column)->text());
    txtEditCalMat->show();
    txtEditCalMat->setFocus(Qt::OtherFocusReason);
}

void MatrixPanel::validateEditor() {
    QTableWidget* grid = flxgrdCalibrationMat;
    if (txtEditCalMat->text().trimmed().isEmpty())
        txtEditCalMat->setText(QStringLiteral("0"));
    const int row = grid->currentRow();
    const int column = grid->currentColumn();
    const QString text = txtEditCalMat->text().trimmed();
    const std::optional<double> value = parseNumber(text);
    if (!value) {
        rejectInput([&](PlateDevice& plate) { showCell(plate, row, column); });
    } else {
        // The typed text stays in the cell until the next selection reads the matrix again.
        grid->item(row, column)->setText(txtEditCalMat->text());
        m_typed[row][column] = true;
        withPlate(
            [&](PlateDevice& plate) { plate.SetMatrixElement(row, column, toSingle(*value)); });
    }
    txtEditCalMat->hide();
}

} // namespace kx
