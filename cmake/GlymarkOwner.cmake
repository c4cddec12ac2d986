# SPDX-License-Identifier: GPL-3.0-or-later
# What an owner fills in before a release, in this one place. What is empty is mentioned nowhere.
# After a change: cmake --build <dir> --target owner

# The page of the program, for example https://example.org/glymark
set(GLYMARK_HOMEPAGE "")
# Where its source is
set(GLYMARK_REPOSITORY "")
# Where faults are reported: a page, or mailto: and an address
set(GLYMARK_FAULTS "")
# The address of the maintainer, which every Debian package has to name
set(GLYMARK_CONTACT "founders@glymark.invalid")
