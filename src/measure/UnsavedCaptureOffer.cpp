#include "measure/UnsavedCaptureOffer.h"

#include "measure/CaptureJournal.h"
#include "measure/UnsavedCaptures.h"
#include "resources/StringTable.h"
#include "support/Folders.h"

#include <QProgressDialog>

namespace kx {

void offerUnsavedCaptures(QWidget* window, Prompt& prompt) {
    auto* offer = new UnsavedCaptures(prompt, window);
    auto* progress = new QProgressDialog(window);
    progress->setObjectName(QStringLiteral("prgUnsavedCapture"));
    progress->setWindowTitle(strings::text(strings::ApplicationTitle));
    progress->setCancelButtonText(strings::text(strings::AcquireBlock + 10));
    progress->setRange(0, 100);
    progress->setWindowModality(Qt::WindowModal);
    progress->reset(); // hidden until a save begins, however long the questions take
    QObject::connect(offer, &UnsavedCaptures::saveStarted, progress, [progress](qint64 rows) {
        progress->setLabelText(strings::text(strings::acquire::SavingCapture).arg(rows));
        progress->setValue(0);
        progress->show();
    });
    QObject::connect(offer, &UnsavedCaptures::progress, progress, &QProgressDialog::setValue);
    QObject::connect(offer, &UnsavedCaptures::saveEnded, progress, &QProgressDialog::reset);
    QObject::connect(progress, &QProgressDialog::canceled, offer, &UnsavedCaptures::cancelSave);
    QObject::connect(offer, &UnsavedCaptures::finished, offer, [offer, progress] {
        progress->deleteLater();
        offer->deleteLater();
    });
    offer->start(UnsavedCapturesFolder());
}

} // namespace kx
