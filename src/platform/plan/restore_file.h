#pragma once

#include "platform/plan/restore.h"

#include <QStringList>

namespace TWB::Info::Plan {

/// A restore of files and folders.
class TWBPLATFORM_EXPORT RestoreFile final : public Restore
{
public:
    RestoreFile();

    const char* className() const override { return "RestoreFile"; }

    QStringList restoreItems() const { return m_restoreItems; }
    void setRestoreItems(const QStringList& items) { m_restoreItems = items; }
    QString destination() const { return m_destination; }
    void setDestination(const QString& destination) { m_destination = destination; }
    bool restoreToOriginalLocation() const { return m_toOriginalLocation; }
    void setRestoreToOriginalLocation(bool original) { m_toOriginalLocation = original; }
    /// Overwrite only where the backed-up file is newer.
    bool onlyNewFiles() const { return m_onlyNewFiles; }
    void setOnlyNewFiles(bool only) { m_onlyNewFiles = only; }
    bool skipExistingFiles() const { return m_skipExistingFiles; }
    void setSkipExistingFiles(bool skip) { m_skipExistingFiles = skip; }

    bool equals(const Base& other) const override;

protected:
    bool acceptsType(int type) const override;
    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    QStringList m_restoreItems;
    QString m_destination;
    bool m_toOriginalLocation = true;
    bool m_onlyNewFiles = false;
    bool m_skipExistingFiles = false;
};

} // namespace TWB::Info::Plan
