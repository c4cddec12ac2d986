// SPDX-License-Identifier: GPL-3.0-or-later
// What the leak sanitizer ignores in every test program. Compiled in, because a blank would cut the
// path of a file in an option.

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's own names.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_options();

// The font configuration and the toolkit's platform plugin keep what they set up at start.
const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\n"
           "leak:libglib-2.0\n"
           "leak:libdbus-1\n"
           "leak:libqoffscreen\n";
}

const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
// NOLINTEND(bugprone-reserved-identifier)
