// The frame editor, the sequence editor and the compile list: the readable
// byte form, files written and read byte for byte, what reaches the
// simulated printer, and the texts the user sees.
#include <gtest/gtest.h>

#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>

#include "app/Texts.h"
#include "protocol/Framefile.h"
#include "sequence/Messagelanguage.h"
#include "tests/gui/Guifakes.h"
#include "windows/Compilelist.h"
#include "windows/Edytor.h"
#include "windows/Edytorseq.h"
#include "windows/Filenames.h"
#include "windows/Printersend.h"

namespace tavena {
namespace {

using test::Hex;
using test::ReadFile;
using test::WriteFile;

// Sets the clock; "8D" is its control sum.
const std::string kClockFrame = "\x1bP26;11;23;8;30;0$c8D\x1b\\";

TEST(ReadableForm, BytesBothWaysAndTheExtensionRule) {
  EXPECT_EQ(EncodeReadable(std::string("\x1b\x41\x7f\xb9 ~\0", 7)), "[x1B]A[x7F][xB9] ~[x00]");
  EXPECT_EQ(DecodeReadable("[x1B]P[xFF][x1b][x0a][xA]][x1G]"),
            std::string("\x1bP\xff\x3b\x2a[xA]][x1G]"));
  std::string every_byte;
  for (int b = 0; b < 256; ++b) every_byte += static_cast<char>(b);
  EXPECT_EQ(DecodeReadable(EncodeReadable(every_byte)), every_byte);
  // Extensions cut at the first full stop unless there (the editors add and replace them).
  EXPECT_EQ(WithExtension("C:\\my.dir\\test", ".TXT"), "C:\\my.txt");
  EXPECT_EQ(WithExtension("/dane/Raport.Bin", ".BIN"), "/dane/Raport.Bin");
}

class Editors : public test::WindowTest {
 protected:
  Editors() {
    Create();
    frames = form->Windows().edytor;
    sequences = form->Windows().edytor_seq;
  }
  static QPlainTextEdit* Text(QWidget* window) {
    return FindControl<QPlainTextEdit>(window, "EEkran");
  }
  static QString Label(QWidget* window, const char* name) {
    return FindControl<QLabel>(window, name)->text();
  }
  void ExpectMessage(size_t index, const char* text, const char* caption) const {
    ASSERT_LT(index, dialogs.messages.size());
    EXPECT_EQ(dialogs.messages[index].text, FromUtf8(text));
    EXPECT_EQ(dialogs.messages[index].caption, FromUtf8(caption));
  }
  TEdytorForm* frames = nullptr;
  TEdytorSeqForm* sequences = nullptr;
};

TEST_F(Editors, FrameFilesByteForByteAndSendingUntilALineFails) {
  Text(frames)->setPlainText(FromUtf8("[x1B]A\n\nzą"));
  dialogs.chosen_file = Path("ramki");
  frames->Zapiszbokubinarny1Click();
  EXPECT_EQ(dialogs.requests.back().title, "Zapis pliku edytowanego.");
  EXPECT_EQ(dialogs.requests.back().filter,
            FromUtf8("Postać binarna(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*"));
  // Sums: FF^1B^41 = A5; FF for no bytes; "z" and Mazovia "ą" (86): FF^7A^86 = 03.
  EXPECT_EQ(Hex(ReadFile(dir.file("ramki.bin"))),
            "1B 50 1B 41 41 35 1B 5C 1B 50 46 46 1B 5C 1B 50 7A 86 30 33 1B 5C");
  EXPECT_EQ(Settings().edit_path, Folder());
  EXPECT_EQ(Settings().edit_file, "ramki.bin");

  // The sum is dropped, 8-bit bytes show by their Windows-1250 code; bytes
  // outside frames and a frame without its end give nothing.
  WriteFile(dir.file("inne.bin"), "xx\x1bP1;0$e\x91\x30\x30\x1b\\garbage\x1bP#vAB\x1b\\\x1bPcut");
  frames->Kasujokno1Click();
  dialogs.chosen_file = Path("ramki.bin");
  frames->Odczytbinarny1Click();
  EXPECT_EQ(dialogs.requests.back().title, "Odczyt pliku binarnego do edycji.");
  dialogs.chosen_file = Path("inne.bin");
  frames->Dopiszplikbinarny1Click();
  EXPECT_EQ(Text(frames)->toPlainText(), "[x1B]A\n\nz[xB9]\n1;0$e[xEA]\n#v");
  EXPECT_EQ(Label(frames, "Label2"), Path("ramki.bin"));
  EXPECT_EQ(Settings().edit_file, "ramki.bin");

  // Sending: the lines as they stand until one fails.
  const std::string bad_sum = "\x1bP26;11;23;8;30;0$c00\x1b\\";
  Text(frames)->setPlainText(
      FromUtf8("ąę\n\n[x1B]P26;11;23;8;30;0$c8D[x1B]\\\n"
               "[x1B]P26;11;23;8;30;0$c00[x1B]\\\nabc"));
  frames->TransmitujClick();
  // Windows-1250 codes, no frame added; the refused frame is the last sent.
  EXPECT_EQ(Received(), "\xb9\xea\x05" + kClockFrame + "\x05" + bad_sum + "\x05");
  ASSERT_EQ(dialogs.messages.size(), 1u);
  ExpectMessage(0, "Nie udało sie wysłać sekwencji.", "Edycja sekwencji binarnych do drukarki.");
  EXPECT_FALSE(form->PrinterBusy());
}

TEST_F(Editors, FrameEditorTextFilesAndTheRememberedFile) {
  Text(frames)->setPlainText(FromUtf8("[x1B]P#v[x1B]\\\nzażółć"));
  dialogs.chosen_file = Path("t.dat");
  frames->Zapiszsekwencj1Click();
  EXPECT_EQ(ReadFile(dir.file("t.sek")), "[x1B]P#v[x1B]\\\r\nza\xbf\xf3\xb3\xe6\r\n");
  EXPECT_EQ(dialogs.requests.back().title, "Zapis pliku w postaci znakowej.");

  // Reading stops at the first empty line.
  WriteFile(dir.file("c.sek"), "one\r\ntwo\n\r\nthree\r\n");
  dialogs.chosen_file = Path("c.sek");
  frames->Odczytsekwencji1Click();
  frames->Dopiszsekwencj1Click();
  EXPECT_EQ(Text(frames)->toPlainText(), "one\ntwo\none\ntwo");
  EXPECT_EQ(dialogs.requests.back().filter, "Sekwencje(*.sek)|*.sek|Wszystkie pliki(*.*)|*.*");
  EXPECT_EQ(dialogs.requests.back().title, "Odczyt pliku do edycji.");

  // On show: the remembered file by its extension; a missing one leaves the
  // path empty; another type is refused.
  const auto show_with = [&](const char* name) {
    frames->hide();
    Settings().edit_file = name;
    frames->show();
  };
  frames->Kasujokno1Click();
  show_with("ramki.bin");
  EXPECT_EQ(Label(frames, "Label2"), "");
  EXPECT_TRUE(dialogs.messages.empty());
  show_with("c.sek");
  EXPECT_EQ(Text(frames)->toPlainText(), "one\ntwo");
  show_with("c.dat");
  EXPECT_EQ(Label(frames, "Label2"), "");
  ASSERT_EQ(dialogs.messages.size(), 1u);
  ExpectMessage(0, "Nierozpoznany typ pliku.", "Edycja sekwencji binarnych do drukarki.");
}

TEST_F(Editors, SequenceEditorCompilesSavesAndTransmits) {
  Settings().edit_path = Folder();
  Settings().edit_seq_file = "zegar.txt";
  Text(sequences)->setPlainText(
      "Zegar\nseq = \\<ESC>P\\<check_start>26;11;23;8;30;0$c\\<check_insert>\\<ESC>\\\\\\<end>");
  dialogs.chosen_file = Path("zegar.txt");
  sequences->Zapiszbokubinarny1Click();
  const FileDialogRequest& request = dialogs.requests.back();
  EXPECT_EQ(request.title, "Kompilacja i zapis pliku edytowanego.");
  EXPECT_EQ(request.file_name, "zegar.txt");
  EXPECT_EQ(request.folder, Path(""));
  EXPECT_EQ(ReadFile(dir.file("zegar.bin")), kClockFrame);
  EXPECT_EQ(Settings().edit_file, "zegar.bin");
  ExpectMessage(0, "Kompilacja powiodła się.", "Edycja sekwencji do drukarki.");

  // After the send, 1000 ms pass and at most 200 reply bytes are taken from
  // the printer's noise of one byte a millisecond (the channel's log shows).
  test::ScopedEnv log_folder("TAVENA_LOG_DIR", dir.str());
  form->Printer().SetLogging(true);
  QObject::connect(&sequences->Sending(), &PrinterSend::Progress, [&](qint64 done, qint64 total) {
    if (done != total || sim->Faults().noise_every_ms) return;
    sim->Faults().noise_every_ms = 1;
    sim->Available(clock.NowMs());
  });
  sequences->TransmitujClick();
  EXPECT_EQ(Received(), kClockFrame + "\x05");
  EXPECT_NE(ReadFile(dir.file(LogBaseNameOf("com5") + "_log.txt"))
                .find("Odebrano: " + std::string(200, '~') + "\r\n"),
            std::string::npos);
  EXPECT_EQ(dialogs.messages.size(), 1u);

  // A text that does not compile: nothing sent, nothing written.
  Text(sequences)->setPlainText("seq = A");
  sequences->TransmitujClick();
  dialogs.chosen_file = Path("zly");
  sequences->Zapiszbokubinarny1Click();
  EXPECT_EQ(Received(), kClockFrame + "\x05");
  EXPECT_FALSE(QFile::exists(Path("zly.bin")));
  for (size_t i : {1, 2})
    ExpectMessage(i, "Kompilacja nie powiodła się.\rSprawdź składnię",
                  "Edycja sekwencji do drukarki.");
}

TEST_F(Editors, SequenceEditorTextFilesAndTheClickablePath) {
  Settings().edit_seq_path = Folder();
  Settings().edit_seq_file = "a.txt";
  WriteFile(dir.file("a.txt"), "seq = 'za\xbf\xf3\xb3\xe6'\r\n\\<end>\r\n");
  sequences->show();
  EXPECT_EQ(Text(sequences)->toPlainText(), FromUtf8("seq = 'zażółć'\n\\<end>"));
  EXPECT_EQ(Label(sequences, "Label1"), Path("a.txt"));

  dialogs.chosen_file = Path("b.dat");
  sequences->Zapiszsekwencj1Click();
  EXPECT_EQ(dialogs.requests.back().file_name, "a.txt");
  EXPECT_EQ(dialogs.requests.back().filter, "Sekwencje(*.txt)|*.txt|Wszystkie pliki(*.*)|*.*");
  EXPECT_EQ(ReadFile(dir.file("b.txt")), "seq = 'za\xbf\xf3\xb3\xe6'\r\n\\<end>\r\n");
  EXPECT_EQ(Settings().edit_seq_file, "b.txt");

  // A click on the path asks first; Cancel writes nothing.
  Text(sequences)->appendPlainText("x");
  dialogs.answers = {false, true};
  auto* label = FindControl<QLabel>(sequences, "Label1");
  test::Click(label);
  EXPECT_EQ(ReadFile(dir.file("b.txt")).size(), 24u);
  test::Click(label);
  EXPECT_EQ(ReadFile(dir.file("b.txt")), "seq = 'za\xbf\xf3\xb3\xe6'\r\n\\<end>\r\nx\r\n");
  EXPECT_EQ(dialogs.messages[1].text, FromUtf8("Zapisać do pliku\n") + Path("b.txt"));
  EXPECT_EQ(dialogs.messages[1].buttons, MessageButtons::kOkCancel);

  sequences->hide();
  Settings().edit_seq_file = "a.sek";
  sequences->show();
  EXPECT_EQ(Text(sequences)->toPlainText(), "");
  ExpectMessage(2, "Nierozpoznany typ pliku.", "Edycja sekwencji do drukarki.");
}

TEST_F(Editors, CompileListLeadsToTheLineAndNotationIsColouredAsCompiled) {
  TCompileListForm* list = form->Windows().compile_list;
  sequences->SprawdzenieClick();
  EXPECT_TRUE(list->isVisible());
  EXPECT_EQ(list->Lines(),
            QStringList({"0: Input file is empty.", FromUtf8("0: Wykryto: 1 błędów.")}));

  Text(sequences)->setPlainText("seq =\nA\n\\q\n\\<end>");
  sequences->SprawdzenieClick();
  EXPECT_EQ(list->Lines(), QStringList({"2: Nierozpoznany znak lub sekwencja.",
                                        FromUtf8("4: Wykryto: 1 błędów.")}));
  auto* messages = FindControl<QPlainTextEdit>(list, "Ekran");
  const QPoint first =
      messages->cursorRect(QTextCursor(messages->document()->firstBlock())).center();
  QMouseEvent click(QEvent::MouseButtonDblClick, first, messages->viewport()->mapToGlobal(first),
                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(messages->viewport(), &click);
  EXPECT_EQ(Text(sequences)->textCursor().blockNumber(), 2);

  sequences->Opis1Click();
  EXPECT_TRUE(list->Lines().join('\n').contains("seg ="));
  list->hide();
  MessageLanguage = 1;
  sequences->Opis1Click();
  MessageLanguage = 0;
  EXPECT_EQ(list->windowTitle(), "Compilation Messages");
  EXPECT_TRUE(list->Lines().join('\n').contains("seq ="));
  sequences->close();
  EXPECT_FALSE(list->isVisible());

  // Text of one kind gets one format, whatever line it stands on.
  QPlainTextEdit* text = Text(sequences);
  text->setPlainText("Opis seq = AB\\<ESC>'x y'\\q\\;uwaga\n\\<end> reszta\\<c>seq = \\<e>");
  const auto format = [&](int line, int at) {
    const QTextBlock block = text->document()->findBlockByNumber(line);
    for (const QTextLayout::FormatRange& range : block.layout()->formats())
      if (at >= range.start && at < range.start + range.length) return range.format;
    return QTextCharFormat();
  };
  const QTextCharFormat commentary = format(0, 0);
  EXPECT_TRUE(commentary.fontItalic());
  EXPECT_EQ(format(0, 26), commentary);  // \;
  EXPECT_EQ(format(1, 8), commentary);   // after \<end>
  EXPECT_EQ(format(1, 17), commentary);  // "seq =" in a comment block
  EXPECT_EQ(format(1, 23), commentary);  // \<e>
  EXPECT_EQ(format(0, 5).fontWeight(), QFont::Bold);
  EXPECT_EQ(format(1, 0), format(0, 5));                                      // \<end> as "seq ="
  EXPECT_FALSE(format(0, 11).hasProperty(QTextFormat::ForegroundBrush));      // plain bytes
  EXPECT_NE(format(0, 13), format(0, 19));                                    // \<ESC>, 'x y'
  EXPECT_EQ(format(0, 24).underlineStyle(), QTextCharFormat::WaveUnderline);  // \q
  EXPECT_EQ(format(0, 13).underlineStyle(), QTextCharFormat::NoUnderline);
}

}  // namespace
}  // namespace tavena
