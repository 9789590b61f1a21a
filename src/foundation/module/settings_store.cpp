// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/settings_store.h"

#include "foundation/streams/mfile.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/streams/user_file.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

void MSettingsStore::Open(const MString& newFolder) {
    MLocker locker(lock);
    folder = newFolder;
    document = std::make_unique<MXMLDocument>();
    unsaved = false;
    Read();
}

void MSettingsStore::CopyTo(MAttribute& target) const {
    MLocker locker(lock);
    target.CopyFrom(document->Root());
}

bool MSettingsStore::Change(const std::function<void(MAttribute&)>& body) {
    MLocker locker(lock);
    if (!unsaved) Read();
    auto changed = std::make_unique<MXMLDocument>();
    changed->Root().CopyFrom(document->Root());
    changed->Root().SetName(name);
    body(changed->Root());
    document = std::move(changed);
    unsaved = !Write();
    return !unsaved;
}

MString MSettingsStore::FilePath() const {
    return MStringFormatter("{0}/{1}.xml") << folder << name;
}

// What is in the way of reading leaves the settings as they are.
void MSettingsStore::Read() {
    if (folder.IsEmpty()) return;
    try {
        MStdFileStream file(FilePath(), MStdFileStream::Mode::Read);
        if (file.GetSize() > kLargestFile) return;
        auto read = std::make_unique<MXMLDocument>();
        read->Load(file);
        document = std::move(read);
    } catch (const MException&) {
    }
}

bool MSettingsStore::Write() const {
    if (folder.IsEmpty()) return false;
    try {
        MFile::CreatePath(folder);
        WriteUserFile(
            FilePath(), [this](MStream& file) { document->Save(file, false, "utf-8"); },
            UserFileAccess::OwnerOnly);
        return true;
    } catch (const MException&) {
        return false;
    }
}
