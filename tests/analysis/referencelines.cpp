// SPDX-License-Identifier: GPL-3.0-or-later
// Prints the first so many reference series, each with its six results: the lines of
// tests/data/results.txt, and what distances.py reads.
#include <cstdio>

#include "support/referenceresults.h"
#include "support/workingfolder.h"

int main(int count, char **arguments)
{
    const WorkingFolder folder;
    useSkip("3");
    for (const QVector<double> &values :
         ReferenceResults::series(count == 2 ? QByteArray(arguments[1]).toInt() : 0)) {
        std::puts(ReferenceResults::line(values).constData());
    }
    return 0;
}
