#include "app/mLoader.h"

#include "app/SingleInstance.h"

#ifdef Q_OS_WIN
#include <commctrl.h>
#include <qt_windows.h>
#endif

namespace kx {

QStringList mLoader::splitCommandLine(QStringView line, int maxArguments) {
    QStringList result;
    QString current;
    bool inArgument = false;
    bool quoted = false;
    for (const QChar ch : line) {
        if (ch == u'"') {
            quoted = !quoted;
            inArgument = true;
        } else if (!quoted && (ch == u' ' || ch == u'\t')) {
            if (inArgument) {
                result << current;
                current.clear();
                inArgument = false;
                if (result.size() == maxArguments)
                    return result;
            }
        } else {
            current += ch;
            inArgument = true;
        }
    }
    if (inArgument)
        result << current;
    return result;
}

QStringList mLoader::arguments(const QStringList& argv) {
#ifdef Q_OS_WIN
    Q_UNUSED(argv);
    // The raw command line starts with the program name, split off by the same rule.
    QStringList all =
        splitCommandLine(QString::fromWCharArray(GetCommandLineW()), MaxArguments + 1);
    if (!all.isEmpty())
        all.removeFirst();
    return all;
#else
    return argv.mid(1, MaxArguments);
#endif
}

bool mLoader::isRegisterRequest(const QStringList& arguments) {
    return !arguments.isEmpty() &&
           arguments.first().trimmed().toUpper() == QLatin1String("/REGISTER");
}

void mLoader::prepareProcess() {
#ifdef Q_OS_WIN
    INITCOMMONCONTROLSEX controls{static_cast<DWORD>(sizeof(INITCOMMONCONTROLSEX)),
                                  ICC_USEREX_CLASSES};
    InitCommonControlsEx(&controls); // a failure changes nothing for a Qt program
    SetErrorMode(SEM_NOGPFAULTERRORBOX | SEM_NOALIGNMENTFAULTEXCEPT);
#endif
}

int mLoader::run(SingleInstance& instance, const QStringList& arguments,
                 const std::function<int()>& runMainWindow) {
    if (!instance.tryAcquire())
        return 0;
    if (isRegisterRequest(arguments))
        return 0;
    return runMainWindow();
}

} // namespace kx
