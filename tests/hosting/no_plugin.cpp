// SPDX-License-Identifier: GPL-3.0-or-later

// A library that is no plug-in.
extern "C" __attribute__((visibility("default"))) int Nothing() { return 0; }
