// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/cconfig.h"

#include <cstdio>
#include <limits>
#include <string>

#include <QFileInfo>

#include "base/atomicsave.h"
#include "base/truncation.h"

struct CConfig::Setting {
    const char *section;
    const char *key;
    int defaultValue;
    quint64 largest;
};

namespace
{

constexpr auto fileName = "config.ini";
constexpr quint64 unlimited = std::numeric_limits<quint64>::max();

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

// A directory opens for reading too, and a pipe waits for its other end: only a plain file will do.
File openForReading()
{
    const QFileInfo info(QString::fromLatin1(fileName));
    if (info.exists() && !info.isFile()) {
        return {nullptr, &std::fclose};
    }
    return {std::fopen(fileName, "rb"), &std::fclose};
}

std::unique_ptr<CConfig> &holder()
{
    static std::unique_ptr<CConfig> config;
    return config;
}

} // namespace

// A value above the largest becomes the default.
const CConfig::Setting CConfig::convergenceSetting = {"Method", "Convergence", 0, 2};
const CConfig::Setting CConfig::varianceSetting = {"Method", "Variance", 0, 2};
const CConfig::Setting CConfig::medianSetting = {"Result", "Median", 1, 1};
const CConfig::Setting CConfig::skipSetting = {"Variable", "Skip", 3, unlimited};
const CConfig::Setting CConfig::showSetting = {"Info", "Show", 1, 1};

CConfig &CConfig::instance()
{
    if (!holder()) {
        holder() = std::make_unique<CConfig>();
    }
    return *holder();
}

void CConfig::resetInstance()
{
    holder().reset();
}

CConfig::CConfig() : settings(false, false, false), loadStatus(load()) { }

int CConfig::load()
{
    if (!readFile()) {
        return LoadFailed;
    }
    bool corrected = false;
    for (const Setting *setting :
         {&showSetting, &convergenceSetting, &varianceSetting, &medianSetting}) {
        corrected |= correct(*setting);
    }
    if (corrected) {
        writeFile();
    }
    return Ok;
}

// Some systems replace no file that is open.
bool CConfig::readFile()
{
    const File file = openForReading();
    return file && settings.LoadFile(file.get()) >= 0;
}

bool CConfig::correct(const Setting &setting)
{
    if (read(setting) <= setting.largest) {
        return false;
    }
    store(setting, setting.defaultValue);
    return true;
}

quint64 CConfig::read(const Setting &setting) const
{
    return toUnsigned(settings.GetDoubleValue(setting.section, setting.key, 0.0));
}

void CConfig::store(const Setting &setting, int value)
{
    settings.SetValue(setting.section, setting.key, std::to_string(value).c_str());
}

quint64 CConfig::convergenceMethod() const
{
    return read(convergenceSetting);
}

quint64 CConfig::varianceMethod() const
{
    return read(varianceSetting);
}

quint64 CConfig::resultMethod() const
{
    return read(medianSetting);
}

quint64 CConfig::skip() const
{
    return read(skipSetting);
}

quint64 CConfig::showInfo() const
{
    return read(showSetting);
}

void CConfig::saveConfig(int convergence, int variance, int median, int skip, int show)
{
    store(convergenceSetting, convergence);
    store(varianceSetting, variance);
    store(medianSetting, median);
    store(skipSetting, skip);
    store(showSetting, show);
    writeFile();
}

int CConfig::createDefaultConfig()
{
    settings.SetMultiKey(false);
    for (const Setting *setting :
         {&convergenceSetting, &varianceSetting, &medianSetting, &skipSetting, &showSetting}) {
        store(*setting, setting->defaultValue);
    }
    return writeFile();
}

int CConfig::writeFile()
{
    std::string content;
    CSimpleIniA::StringWriter writer(content);
    settings.Save(writer, false);
    const QByteArray bytes(content.data(), int(content.size()));
    return saveAtomically(QString::fromLatin1(fileName), bytes) ? Ok : WriteFailed;
}
