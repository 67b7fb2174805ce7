#pragma once

#include <QString>
#include <array>

// Files that ship with the program besides its string table.
namespace kx::resources {

// The program icon is drawn at each of these sizes, in iconFile(size) inside the program.
inline constexpr std::array<int, 4> IconSizes{16, 32, 48, 256};
inline QString iconFile(int size) {
    return QStringLiteral(":/icons/kxcpl-%1.png").arg(size);
}

// The completion sound (a WAV file), which the build copies into the program's own folder.
inline constexpr char SoundFileName[] = "PSND_XX.sts";

// Where the completion sound is for the program in `programFolder`: beside the program when it
// is there (as the build leaves it, or as someone put a sound of their own there), else in the
// program's installed data folder; when it is in neither, beside the program, so a playback
// that fails names the place the sound belongs.
QString soundFile(const QString& programFolder);

} // namespace kx::resources
