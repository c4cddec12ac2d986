// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class WorkbookWriter;

/// Says in the properties of \p workbook that this program made it, in which version and with which
/// offset; nothing of the user, the machine or the time.
void nameOrigin(WorkbookWriter &workbook);
