#pragma once

#include "app/PlatePanel.h"

#include <array>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace kx {

// "Calibration Matrix:": the plate's 3 x 3 matrix (rows Fz, Mx, My; columns bridge channels
// 1 to 3) in a grid whose cells are edited in place by txtEditCalMat.
class MatrixPanel : public PlatePanel {
    Q_OBJECT
public:
    static constexpr int Size = 3;

    MatrixPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    // A cell whose text was typed keeps it until the next selection reads the matrix again;
    // a refresh in between reads only the other cells.
    enum class TypedText { Replace, Keep };

    // One row of the grid from the plate.
    void fillRow(PlateDevice& plate, int row, TypedText typed = TypedText::Replace);
    // Enters `text` into cell (row, column) as a user would: through the editor, which writes
    // the plate's matrix element.
    void enterCell(int row, int column, const QString& text);

    QLabel* lblCalMatCaption;
    QTableWidget* flxgrdCalibrationMat;
    QLineEdit* txtEditCalMat;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openEditor();
    void validateEditor();
    void showCell(PlateDevice& plate, int row, int column);

    std::array<std::array<bool, Size>, Size> m_typed{};
};

} // namespace kx
