#include "Filenames.h"

#include <QFile>
#include <algorithm>

#include "app/Settings.h"
#include "app/Texts.h"
#include "sequence/Ibuffer.h"

namespace tavena {

QString WithExtension(const QString& path, const QString& extension) {
  if (path.toUpper().contains(extension.toUpper())) return path;
  const qsizetype stop = path.indexOf(QLatin1Char('.'));
  return (stop < 0 ? path : path.left(stop)) + extension.toLower();
}

namespace {

qsizetype NameStart(const QString& path) {
  return std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\'))) + 1;
}

}  // namespace

QString FolderOf(const QString& path) {
  return path.left(NameStart(path));
}

QString NameOf(const QString& path) {
  return path.mid(NameStart(path));
}

QString RememberedFile::Folder() const {
  return FromCp1250(*folder);
}

QString RememberedFile::Name() const {
  return FromCp1250(*name);
}

QString RememberedFile::Path() const {
  return Folder() + Name();
}

void RememberedFile::Remember(const QString& path) const {
  *folder = ToCp1250(FolderOf(path));
  *name = ToCp1250(NameOf(path));
}

RememberedFile SequenceFile() {
  return {&Settings().edit_seq_path, &Settings().edit_seq_file};
}

RememberedFile BinaryFile() {
  return {&Settings().edit_path, &Settings().edit_file};
}

RememberedFile SenderFile() {
  return {&Settings().sender_path, &Settings().sender_file};
}

std::string NativeName(const QString& path) {
  return QFile::encodeName(path).toStdString();
}

std::optional<std::string> ReadWholeFile(const QString& path) {
  iBuffer file;
  if (!file.LoadFromFile(NativeName(path))) return std::nullopt;
  return file.ToString();
}

bool WriteWholeFile(const QString& path, const std::string& bytes) {
  return iBuffer(bytes).SaveToFile(NativeName(path));
}

}  // namespace tavena
