# SPDX-License-Identifier: GPL-3.0-or-later
"""Sound files as lists of samples, one for each channel, and how far two of them are apart."""

import math
import random
import struct

RATE = 48000


def noise(frames, seed):
    """Two channels at about -12 dBFS whose samples are exact in 16 bits."""
    source = random.Random(seed)
    return [[source.randint(-8192, 8191) / 32768 for _ in range(frames)] for _ in range(2)]


def write(path, channels):
    """As 32-bit float WAV."""
    samples = [sample for frame in zip(*channels) for sample in frame]
    data = struct.pack(f"<{len(samples)}f", *samples)
    width = 4 * len(channels)
    form = struct.pack("<HHIIHH", 3, len(channels), RATE, RATE * width, width, 32)
    chunks = b"WAVEfmt " + struct.pack("<I", len(form)) + form
    chunks += b"data" + struct.pack("<I", len(data)) + data
    path.write_bytes(b"RIFF" + struct.pack("<I", len(chunks)) + chunks)


def chunk(content, name):
    place = 12
    while place + 8 <= len(content):
        size = struct.unpack_from("<I", content, place + 4)[0]
        if content[place : place + 4] == name:
            return place + 8, min(size, len(content) - place - 8)
        place += 8 + size + size % 2
    raise ValueError(f"no chunk {name} in a WAV file")


def read(path):
    """16-bit or 32-bit float WAV."""
    content = path.read_bytes()
    form, _ = chunk(content, b"fmt ")
    count, bits = (struct.unpack_from("<H", content, form + offset)[0] for offset in (2, 14))
    start, size = chunk(content, b"data")
    if bits == 16:
        samples = [s / 32768 for s in struct.unpack_from(f"<{size // 2}h", content, start)]
    else:
        samples = struct.unpack_from(f"<{size // 4}f", content, start)
    return [list(samples[channel::count]) for channel in range(count)]


def ordinal(sample):
    """Numbers 32-bit floats in their order, so that neighbours differ by 1."""
    bits = struct.unpack("<i", struct.pack("<f", sample))[0]
    return bits if bits >= 0 else -0x80000000 - bits


def pairs(first, second, lag):
    """Samples of the second, lag frames later, beside those of the first."""
    for a, b in zip(first, second):
        yield from zip(a, b[lag:]) if lag >= 0 else zip(a[-lag:], b)


# Less than what plug-ins add against denormals is silence.
SILENCE = 1e-12


def largest_ulps(first, second, lag=0):
    return max(
        abs(ordinal(a) - ordinal(b))
        for a, b in pairs(first, second, lag)
        if max(abs(a), abs(b)) > SILENCE
    )


def difference_decibels(first, second, lag=0):
    """The largest difference, relative to full scale."""
    largest = max(abs(a - b) for a, b in pairs(first, second, lag))
    return 20 * math.log10(largest) if largest > 0 else -math.inf


def peak_decibels(channels):
    largest = max(abs(sample) for channel in channels for sample in channel)
    return 20 * math.log10(largest) if largest > 0 else -math.inf
