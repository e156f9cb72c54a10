#!/usr/bin/python3
"""Writes what the colour maps are checked against, from Debian's python3-matplotlib.

  make_colormap_golden.py golden > tests/kernels/colormap_golden.txt
  make_colormap_golden.py listed > src/processing/colormaps/ListedColors.h

golden: 64 samples a map and resolution, quantised to the nearest of 256 levels. A map that matplotlib keeps as a
list of 256 colours would merely repeat them at higher resolutions, so it is sampled as the linear map through
its colours, which is the same at 256 points.
listed: those lists, 16 bits a channel, as the table generator reads them.
"""
import sys

import matplotlib.pyplot
import numpy
from matplotlib.colors import LinearSegmentedColormap, ListedColormap

NAMES = ["CMRmap", "cubehelix", "gist_earth", "gist_heat", "gnuplot2", "hot", "jet", "magma", "nipy_spectral",
         "plasma", "viridis"]
SAMPLES = 64


def table(name, size):
    source = matplotlib.pyplot.get_cmap(name)
    if isinstance(source, ListedColormap):
        sampled = LinearSegmentedColormap.from_list(name, source.colors, size)
    else:
        sampled = LinearSegmentedColormap(name, source._segmentdata, size)
    sampled._init()
    return numpy.floor(sampled._lut[:size, :3] * 255 + 0.5).astype(int)


def golden():
    print("# map bits entry red green blue; written by scripts/make_colormap_golden.py, matplotlib",
          matplotlib.__version__)
    for name in NAMES:
        for bits in range(8, 15):
            entries = table(name, 1 << bits)
            for k in range(SAMPLES):
                entry = k * (len(entries) - 1) // (SAMPLES - 1)
                print(name, bits, entry, *entries[entry])


def listed():
    print("// The colour maps that are published as 256 colours: four hexadecimal digits a channel, 65535 is 1.")
    print("// Written by scripts/make_colormap_golden.py.\n#pragma once\n")
    print("namespace VX3::ColorMaps {\n")
    print("// clang-format off")
    for name in NAMES:
        source = matplotlib.pyplot.get_cmap(name)
        if not isinstance(source, ListedColormap):
            continue
        print(f"constexpr const char* Listed{name.capitalize()} =")
        words = numpy.round(numpy.array(source.colors)[:, :3] * 65535).astype(int)
        for line in range(0, 256, 8):
            text = "".join(f"{word:04x}" for word in words[line:line + 8].flatten())
            print(f'    "{text}"' + (";" if line == 248 else ""))
        print()
    print("// clang-format on")
    print("\n} // namespace VX3::ColorMaps")


{"golden": golden, "listed": listed}[sys.argv[1] if len(sys.argv) > 1 else "golden"]()
