#include "calibration/PlateCommit.h"

#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/NumberFormat.h"

namespace kx {

namespace {

namespace c = strings::calibrate;

// Writes the cells and reads each back; throws PlateError naming the first cell that does not
// hold what was written.
void writeCells(PlateDevice& plate, const CalMatrix& cells) {
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            plate.SetMatrixElement(row, column, cells[std::size_t(row)][std::size_t(column)]);
    const CalMatrix held = readPlateMatrix(plate);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const float written = cells[std::size_t(row)][std::size_t(column)];
            const float read = held[std::size_t(row)][std::size_t(column)];
            if (read != written)
                throw PlateError(strings::text(c::CommitMismatch)
                                     .arg(row + 1)
                                     .arg(column + 1)
                                     .arg(formatGeneral(read), formatGeneral(written)));
        }
    }
}

} // namespace

CalMatrix committedCells(const CalMatrix& scaled) {
    CalMatrix cells{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            cells[row][column] = formatGeneral(scaled[row][column]).toFloat();
    return cells;
}

CalMatrix readPlateMatrix(PlateDevice& plate) {
    CalMatrix cells{};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            cells[std::size_t(row)][std::size_t(column)] = plate.MatrixElement(row, column);
    return cells;
}

CommitOutcome commitToPlate(PlateDevice& plate, const CalMatrix& cells, const QString& operatorCode,
                            const Clock& clock) {
    using Result = CommitOutcome::Result;
    CalMatrix old{};
    try {
        old = readPlateMatrix(plate);
    } catch (const PlateError& error) {
        return {Result::NothingWritten, strings::text(c::CommitOldUnreadable).arg(error.message())};
    }
    try {
        writeCells(plate, cells);
    } catch (const PlateError& error) {
        try {
            writeCells(plate, old);
        } catch (const PlateError& restore) {
            return {Result::MixedCells,
                    strings::text(c::CommitMixed).arg(error.message(), restore.message())};
        }
        return {Result::OldMatrixBack, strings::text(c::CommitFailed).arg(error.message())};
    }
    try {
        plate.SetOperatorRecord2(QLatin1String(OperatorTag2) + operatorCode,
                                 clock.currentDateTime());
        plate.SetOperatorRecord3(QLatin1String(OperatorTag3) + operatorCode,
                                 clock.currentDateTime());
    } catch (const PlateError& error) {
        return {Result::RecordsMissing, strings::text(c::CommitRecordsFailed).arg(error.message())};
    }
    return {};
}

} // namespace kx
