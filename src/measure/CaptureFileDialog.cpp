#include "measure/CaptureFileDialog.h"

#include "resources/StringTable.h"

namespace kx {

FileDialogRequest captureFileDialog(const QString& initialFolder) {
    constexpr int Title = strings::AcquireBlock + 500;
    constexpr int Extension = strings::AcquireBlock + 510;
    constexpr int Filter = strings::AcquireBlock + 520;
    return {
        .title = strings::text(Title),
        .filter = strings::text(Filter),
        .filterIndex = 2,
        .defaultExtension = strings::text(Extension),
        .initialFolder = initialFolder,
        .fileName = {},
        .overwritePrompt = true,
        .pathMustExist = true,
        .fileMustExist = false,
        .hideReadOnly = true,
        .noReadOnlyReturn = true,
    };
}

} // namespace kx
