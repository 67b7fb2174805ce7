#include "cli/RescueSave.h"

#include "support/Folders.h"

#include <QDir>
#include <QFileInfo>

namespace kx::cli {

namespace {

// `name` in `folder`, or with "_1", "_2", ... before its suffix when that file exists.
QString freeName(const QString& folder, const QString& name) {
    const QFileInfo info(name);
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
    QString candidate = folder + u'/' + name;
    for (int n = 1; QFileInfo::exists(candidate); ++n)
        candidate = folder + u'/' + info.completeBaseName() + u'_' + QString::number(n) + suffix;
    return candidate;
}

} // namespace

QString RescueSave::message() const {
    const QString why = reasons.isEmpty() ? QDir::toNativeSeparators(requested) : reasons.front();
    if (rescued())
        return why + QStringLiteral("; saved in %1 instead").arg(QDir::toNativeSeparators(path));
    return why + (reasons.size() > 1
                      ? QStringLiteral("; no rescue place could be written either (%1)")
                            .arg(reasons.mid(1).join(QStringLiteral("; ")))
                      : QString());
}

QStringList rescuePlaces(const QString& requested) {
    const QString name = QFileInfo(requested).fileName();
    QStringList places;
    for (const QString& folder : {DocumentsFolder(), QDir::tempPath()}) {
        if (!folder.isEmpty() && QFileInfo(folder).isDir())
            places << freeName(folder, name);
    }
    return places;
}

RescueSave saveOrRescue(const QString& requested, const FileWriter& write) {
    RescueSave result{.requested = requested, .path = {}, .reasons = {}};
    for (const QString& place : QStringList{requested} + rescuePlaces(requested)) {
        QString reason;
        if (write(place, reason)) {
            result.path = place;
            return result;
        }
        result.reasons << (reason.isEmpty() ? QStringLiteral("%1: could not be written")
                                                  .arg(QDir::toNativeSeparators(place))
                                            : reason);
    }
    return result;
}

} // namespace kx::cli
