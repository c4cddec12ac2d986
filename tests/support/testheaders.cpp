// SPDX-License-Identifier: GPL-3.0-or-later
// Empty: the headers are named where this is compiled.
