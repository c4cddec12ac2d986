// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/commalocale.h"

#include <QDir>
#include <QProcess>

const char *const commaLocale = "cs_CZ.UTF-8";

bool makeCommaLocale(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        return false;
    }
    QProcess localedef;
    localedef.start("localedef", {"-i", "cs_CZ", "-f", "UTF-8", folder + '/' + commaLocale});
    return localedef.waitForFinished() && localedef.exitCode() == 0;
}
