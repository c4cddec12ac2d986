// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QtGlobal>
#include <SimpleIni.h>

/// The user's settings, kept in "config.ini" in the working directory.
///
/// The file is read once, when the store is made. Every getter reads the store afresh, as a double
/// truncated toward zero into an unsigned whole number; a key that is missing, or whose text is not
/// a number, reads as 0. SimpleIni takes the decimal point from LC_NUMERIC, which has to be "C".
/// Only the thread of the user interface may use the store.
class CConfig
{
public:
    /// Outcomes of a load and of a write.
    enum Result { Ok = 0, LoadFailed = -1, WriteFailed = -3 };

    /// The one store of the process, made (and loaded) by the first caller.
    static CConfig &instance();
    /// Drops the store of the process, so that the next instance() reads the file again.
    static void resetInstance();

    /// Reads "config.ini"; a value out of its range is corrected, and the file rewritten then.
    CConfig();

    /// Ok after a load, LoadFailed if the file could not be opened or read.
    int status() const { return loadStatus; }

    /// Index of the chosen convergence method, 0 to 2.
    quint64 convergenceMethod() const;
    /// Index of the chosen variability method, 0 to 2.
    quint64 varianceMethod() const;
    /// The chosen center: 1 median, 0 average.
    quint64 resultMethod() const;
    /// How many leading values the difference standard deviation leaves out; any number.
    quint64 skip() const;
    /// The show-information flag, 0 or 1.
    quint64 showInfo() const;

    /// Stores all five settings and writes the file. A failed write is not reported: the store
    /// still holds the new values.
    void saveConfig(int convergence, int variance, int median, int skip, int show);

    /// Stores the five defaults and writes the file. Returns Ok or WriteFailed.
    int createDefaultConfig();

    /// Writes the store to the file, whole or not at all. Returns Ok or WriteFailed.
    int writeFile();

private:
    struct Setting;
    static const Setting convergenceSetting, varianceSetting, medianSetting, skipSetting,
        showSetting;

    int load();
    bool readFile();
    bool correct(const Setting &setting);
    quint64 read(const Setting &setting) const;
    void store(const Setting &setting, int value);

    CSimpleIniA settings;
    int loadStatus = Ok;
};
