#include "platform/plan/restore_file.h"

#include "platform/plan/plan_xml_p.h"

namespace TWB::Info::Plan {

RestoreFile::RestoreFile()
    : Restore(TypeFile)
{ }

bool RestoreFile::acceptsType(int type) const
{
    return type == TypeFile || type == TypeSystemFullFile || type == TypeUnknown;
}

bool RestoreFile::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const RestoreFile*>(&other);
    return o && Restore::equals(other) && m_restoreItems == o->m_restoreItems && m_destination == o->m_destination
        && m_toOriginalLocation == o->m_toOriginalLocation && m_onlyNewFiles == o->m_onlyNewFiles
        && m_skipExistingFiles == o->m_skipExistingFiles;
}

void RestoreFile::writeFields(Xml::Writer& w) const
{
    Restore::writeFields(w);
    w.begin("Files");
    w.list("Items", "Item", m_restoreItems);
    w.text("Destination", m_destination);
    w.boolean("ToOriginalLocation", m_toOriginalLocation);
    w.boolean("OnlyNewFiles", m_onlyNewFiles);
    w.boolean("SkipExistingFiles", m_skipExistingFiles);
    w.end();
}

void RestoreFile::readFields(Xml::Reader& r, const QDomElement& root)
{
    Restore::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "Files");
    if (e.isNull())
        return;
    m_restoreItems = r.list(e, "Items", "Item");
    m_destination = r.text(e, "Destination");
    m_toOriginalLocation = r.boolean(e, "ToOriginalLocation", m_toOriginalLocation);
    m_onlyNewFiles = r.boolean(e, "OnlyNewFiles", m_onlyNewFiles);
    m_skipExistingFiles = r.boolean(e, "SkipExistingFiles", m_skipExistingFiles);
}

} // namespace TWB::Info::Plan
