// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "base/devicecontent.h"

/// Does what saveAtomically() promises, with the means of the system: each has a source of its own,
/// and the build takes one of them.
bool replaceFile(const QString &fileName, const ContentWriter &write);
