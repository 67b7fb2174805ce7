#!/usr/bin/env python3
"""Writes the completion chime src/resources/PSND_XX.sts.

A soft two-tone chime (a falling major third) as 16-bit PCM, mono, 22050 Hz, 0.35 s.
Deterministic: running it again reproduces the committed file byte for byte.
Usage: scripts/make-sound.py [output path]
"""

import math
import struct
import sys
import wave
from pathlib import Path

RATE = 22050
LENGTH_S = 0.35
PEAK = 0.35  # of full scale: a chime, not an alarm

# (start s, frequency Hz, decay time constant s)
NOTES = ((0.0, 1318.51, 0.07), (0.11, 1046.50, 0.09))
ATTACK_S = 0.004  # avoids a click at each onset
FADE_S = 0.02  # ends the file in silence


def sample(t: float) -> float:
    value = 0.0
    for start, freq, decay in NOTES:
        u = t - start
        if u < 0.0:
            continue
        envelope = min(1.0, u / ATTACK_S) * math.exp(-u / decay)
        # A quiet octave partial gives the sine a bell-like colour.
        value += envelope * (math.sin(2 * math.pi * freq * u)
                             + 0.2 * math.sin(4 * math.pi * freq * u))
    fade = min(1.0, (LENGTH_S - t) / FADE_S)
    return value * fade


def main() -> None:
    default = Path(__file__).resolve().parent.parent / "src" / "resources" / "PSND_XX.sts"
    out = Path(sys.argv[1]) if len(sys.argv) > 1 else default
    count = int(RATE * LENGTH_S)
    raw = [sample(i / RATE) for i in range(count)]
    scale = PEAK * 32767 / max(abs(v) for v in raw)
    frames = b"".join(struct.pack("<h", round(v * scale)) for v in raw)
    with wave.open(str(out), "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(frames)
    print(f"{out}: {count} samples, {count / RATE:.3f} s")


if __name__ == "__main__":
    main()
