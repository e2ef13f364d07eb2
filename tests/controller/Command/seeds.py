"""The seeds of a study's units, worked out from their description in docs/studies.md, without the program."""

MASK = (1 << 64) - 1
GREATEST = (1 << 30) - 3


def mix(value):
    value = ((value ^ (value >> 30)) * 0xBF58476D1CE4E5B9) & MASK
    value = ((value ^ (value >> 27)) * 0x94D049BB133111EB) & MASK
    return value ^ (value >> 31)


def fnv(text):
    value = 0xCBF29CE484222325
    for byte in text.encode():
        value = ((value ^ byte) * 0x100000001B3) & MASK
    return value


def unit_seed(study_seed, experiment, unit):
    key = mix(mix(study_seed) ^ fnv(experiment))
    seed = unit + 1
    while True:
        left, right = seed >> 15, seed & 0x7FFF
        for i in range(8):
            left, right = right, left ^ (mix((key + (i + 1) * 0x9E3779B97F4A7C15 + right) & MASK) & 0x7FFF)
        seed = left << 15 | right
        if 1 <= seed <= GREATEST:
            return seed
