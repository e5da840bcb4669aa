// The file lists of the entity list and the file sender: the files of one
// folder with one extension whose attributes are exactly "archive" (no
// read-only, hidden or system file), in the order the file system gives.
#pragma once

#include <QStringList>

namespace tavena {

// Names (without the folder) of folder's "*.<extension>" files that are
// archive-only. Outside Windows: regular files the owner may write whose
// names do not start with a dot (the archive bit has no equivalent there).
QStringList ArchiveFiles(const QString& folder, const QString& extension);

}  // namespace tavena
