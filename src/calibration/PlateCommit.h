#pragma once

#include "calibration/CalMatrix.h"

#include <QString>

namespace kx {

class Clock;
class PlateDevice;

// How OK's writes to the plate ended. The plate holds all nine new cells or its old matrix:
// the operator records, which claim a calibration, are written only once every cell reads back
// as written.
struct CommitOutcome {
    enum class Result {
        Committed,      // the nine cells and both operator records
        NothingWritten, // the old matrix could not be read, so nothing was touched
        OldMatrixBack,  // a write or read-back failed; the old cells are back in the plate
        MixedCells,     // a write failed and so did writing the old cells back
        RecordsMissing, // the new matrix is in the plate, an operator record is not
    };
    Result result = Result::Committed;
    QString message; // for the user; empty when committed

    bool matrixHeld() const {
        return result == Result::Committed || result == Result::RecordsMissing;
    }
};

// The operator records' fixed tags; the operator's code follows each.
inline constexpr char OperatorTag2[] = "KXI_OP_27.930418.2";
inline constexpr char OperatorTag3[] = "KXI_OP_361907254.8";

// The cells OK writes for the scaled matrix: each the single-precision value of the text the
// main window's matrix boxes show, so that the plate ends up holding exactly what they show.
CalMatrix committedCells(const CalMatrix& scaled);

// The nine cells the plate holds; throws PlateError.
CalMatrix readPlateMatrix(PlateDevice& plate);

// Reads the plate's matrix, writes `cells` (row-major) and reads them back; on any failure
// writes the old cells back. Then the two operator records, each stamped with the calendar
// as it is when it is written. Device failures are caught here and told in the outcome once.
CommitOutcome commitToPlate(PlateDevice& plate, const CalMatrix& cells, const QString& operatorCode,
                            const Clock& clock);

} // namespace kx
