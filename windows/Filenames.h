// File names as the editors and the sender handle them: the extension rule
// of their save commands, the program-wide remembered folders and names
// (kept in the settings record, Windows-1250), and whole-file reads and
// writes by a window's path.
#pragma once

#include <QString>
#include <optional>
#include <string>

namespace tavena {

// The path with extension (".TXT", ".BIN"): kept when the upper-cased path
// holds it; otherwise cut at its first full stop, wherever that stands (a
// folder "my.dir" shortens the path too), and the extension appended in
// lower case.
QString WithExtension(const QString& path, const QString& extension);

// Up to and including the last "/" or "\" (empty when there is none), and
// the rest.
QString FolderOf(const QString& path);
QString NameOf(const QString& path);

// A remembered folder and file name of the settings record.
struct RememberedFile {
  std::string* folder;
  std::string* name;

  QString Folder() const;
  QString Name() const;
  // Folder followed by name.
  QString Path() const;
  void Remember(const QString& path) const;
};

// The sequence editor's text files.
RememberedFile SequenceFile();
// The binary files: the frame editor's files and the sequence editor's
// compiled ones.
RememberedFile BinaryFile();
// The sender's folder and its last file.
RememberedFile SenderFile();

// The name as the C library opens it.
std::string NativeName(const QString& path);
// The whole file; nothing when it is missing, unreadable or empty.
std::optional<std::string> ReadWholeFile(const QString& path);
// Replaces the file with bytes; false when it cannot be written.
bool WriteWholeFile(const QString& path, const std::string& bytes);

}  // namespace tavena
