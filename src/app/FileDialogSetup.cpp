#include "app/FileDialogSetup.h"

#include <QDir>
#include <QRegularExpression>

namespace kx {

QStringList qtNameFilters(const QString& filter) {
    static const QRegularExpression trailingPatterns(QStringLiteral("\\s*\\([^()]*\\)\\s*$"));
    const QStringList parts = filter.split(u'|');
    QStringList result;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString caption = parts[i];
        caption.remove(trailingPatterns);
        QStringList patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts);
        for (QString& pattern : patterns) {
            pattern = pattern.trimmed();
            if (pattern == QLatin1String("*.*"))
                pattern = QStringLiteral("*");
        }
        result << caption.trimmed() + QStringLiteral(" (") + patterns.join(u' ') + u')';
    }
    return result;
}

void setUpFileDialog(QFileDialog& dialog, const FileDialogRequest& request,
                     QFileDialog::AcceptMode mode) {
    dialog.setAcceptMode(mode);
    dialog.setWindowTitle(request.title);
    const QStringList filters = qtNameFilters(request.filter);
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        const qsizetype index = request.filterIndex - 1;
        dialog.selectNameFilter(filters.value(index >= 0 && index < filters.size() ? index : 0));
    }
    QString suffix = request.defaultExtension;
    if (suffix.startsWith(u'.'))
        suffix.remove(0, 1);
    dialog.setDefaultSuffix(suffix);
    if (!request.initialFolder.isEmpty())
        dialog.setDirectory(request.initialFolder);
    if (!request.fileName.isEmpty())
        dialog.selectFile(request.fileName);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen && request.fileMustExist
                           ? QFileDialog::ExistingFile
                           : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !request.overwritePrompt);
}

} // namespace kx
