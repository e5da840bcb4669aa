#include "Filelist.h"

#include <QDir>
#include <QFileInfo>

#ifdef _WIN32
#include <windows.h>
#endif

namespace tavena {

#ifdef _WIN32

QStringList ArchiveFiles(const QString& folder, const QString& extension) {
  QStringList names;
  const std::wstring pattern =
      QDir::toNativeSeparators(folder + QStringLiteral("/*.") + extension).toStdWString();
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW(pattern.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    if (entry.dwFileAttributes == FILE_ATTRIBUTE_ARCHIVE)
      names << QString::fromWCharArray(entry.cFileName);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  return names;
}

#else

QStringList ArchiveFiles(const QString& folder, const QString& extension) {
  QStringList names;
  const QDir dir(folder, QStringLiteral("*.") + extension, QDir::Unsorted, QDir::Files);
  for (const QFileInfo& file : dir.entryInfoList())
    if (file.isFile() && !file.isSymLink() && file.permission(QFile::WriteOwner) &&
        !file.isHidden())
      names << file.fileName();
  return names;
}

#endif

}  // namespace tavena
