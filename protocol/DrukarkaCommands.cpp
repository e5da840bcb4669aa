// The printer commands: each builds its body and sends it framed with a sum.
#include "Drukarka.h"

namespace tavena {

bool Drukarka::SendBodyIf(const std::optional<std::string>& body) {
  return body && SendFramed(*body);
}

bool Drukarka::SetClock(int year, int month, int day, int hour, int minute, int second) {
  return SendBodyIf(ClockBody(year, month, day, hour, minute, second));
}

bool Drukarka::SetClockFromText(const std::string& text) {
  return SendBodyIf(ClockBodyFromText(text));
}

bool Drukarka::SetVatRates(const std::array<double, 7>& rates) {
  return SendFramed(VatRatesBody(rates, subtype));
}

bool Drukarka::SetHeader(const std::vector<HeaderLine>& lines) {
  return SendFramed(HeaderBody(lines));
}

bool Drukarka::Fiscalise(int p, const std::string& nip) {
  return SendFramed(FiscaliseBody(p, nip));
}

bool Drukarka::PeriodicReport(const PrinterDate& from, const PrinterDate& to, int p) {
  return SendFramed(PeriodicReportBody(from, to, p));
}

bool Drukarka::ReportByNumber(int p, const PrinterDate& date) {
  return SendFramed(ReportByNumberBody(p, date));
}

bool Drukarka::CashCommand(int p, const std::string& text, uint8_t code) {
  return SendBodyIf(CashCommandBody(p, text, code));
}

bool Drukarka::ParamCommandAmpC(int p) {
  return SendFramed(ParamCommandAmpCBody(p));
}

bool Drukarka::ParamCommandDollarH(int p) {
  return SendFramed(ParamCommandDollarHBody(p));
}

bool Drukarka::SaleLine(const SaleLineRecord& line) {
  return SendFramed(SaleLineBody(line));
}

bool Drukarka::EndTransaction(const EndTransactionRecord& record) {
  return SendFramed(EndTransactionBody(record));
}

bool Drukarka::CancelTransaction(const std::string& a, const std::string& b, const std::string& c) {
  return SendFramed(CancelTransactionBody(a, b, c));
}

bool Drukarka::SendText(std::string_view body) {
  return SendFramed(body);
}

bool Drukarka::TestReceipt() {
  SaleLineRecord sale;
  sale.name = "Towar testowy 1gr";
  sale.price = 0.01;
  EndTransactionRecord end;
  end.code = "NRS5555";
  end.lines = {"Stopka 1", "Stopka 2", "Stopka 3", ""};
  end.amount1 = 0.01;
  end.amount2 = 0.01;
  const bool opened = ParamCommandDollarH(0);
  const bool sold = SaleLine(sale);
  return EndTransaction(end) && opened && sold;
}

}  // namespace tavena
