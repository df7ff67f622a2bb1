#pragma once

#include "platform/VQMProperties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace Orvia {

/// Each test has a folder of its own and an empty property store loaded from there.
class HostTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(VQMProperties::load(write("test.ini", ""), nullptr)); }

    QString path(const QString &name) const { return m_folder.filePath(name); }

    QString write(const QString &name, const QByteArray &contents) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
        return file.fileName();
    }

    QByteArray contents(const QString &name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    static void set(const QString &section, const QString &key, const QString &value)
    {
        VQMProperties::setStringProperty(section, key, value, 0);
    }

    static QString get(const QString &section, const QString &key)
    {
        return VQMProperties::getStringProperty(section, key, "(unset)", 0, nullptr);
    }

    /// What `work` writes to standard error.
    template <typename Work>
    static std::string standardError(Work work)
    {
        ::testing::internal::CaptureStderr();
        work();
        return ::testing::internal::GetCapturedStderr();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace Orvia
