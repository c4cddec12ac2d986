// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/workbookorigin.h"

#include "settings/cconfig.h"
#include "xlsx/writing/workbookwriter.h"

void nameOrigin(WorkbookWriter &workbook)
{
    const QString program = QStringLiteral("Glymark");
    workbook.setOrigin(program,
                       QStringLiteral("%1 %2, offset %3")
                           .arg(program, QStringLiteral(GLYMARK_VERSION))
                           .arg(CConfig::instance().skip()));
}
