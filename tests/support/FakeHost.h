#pragma once

#include "ScriptedPrompts.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "symbols/OperationHost.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

// An open blockset for operation tests without a document: a working folder with
// blocks/, textures/ and sounds/ in a temporary folder, settings in a hive file
// beside it with the defaults loaded, scripted prompts, and the effects an
// operation has on the document recorded.
class FakeHost : public OperationHost {
public:
    FakeHost() : m_hive(m_temp.filePath(QStringLiteral("registry.reg"))), m_settings(m_hive)
    {
        m_settings.loadSettings();
        for (const char *name : {"work/blocks", "work/textures", "work/sounds"})
            QDir(m_temp.path()).mkpath(QString::fromLatin1(name));
    }

    BlocksetContent &content() override { return blockset; }
    Prompts &prompts() override { return scripted; }
    SymbolPrompt &symbolPrompt() override { return scripted; }
    RegistryWrapper &settings() override { return m_settings; }
    QString workingFolder() const override { return m_temp.filePath(QStringLiteral("work")); }
    void setBlocksetChanged() override { changed = true; }
    void showProcess(const QString &text) override { processTexts.append(text); }

    // A folder outside the working folder for source files.
    QString sourceFolder() const
    {
        QDir(m_temp.path()).mkpath(QStringLiteral("source"));
        return m_temp.filePath(QStringLiteral("source"));
    }

    BlocksetContent blockset;
    ScriptedPrompts scripted;
    bool changed = false;
    QStringList processTexts;

private:
    QTemporaryDir m_temp;
    HiveRegistry m_hive;
    RegistryWrapper m_settings;
};
