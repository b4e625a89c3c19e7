#include "core/RowLoan.h"

#include <utility>

#include "platform/component/Guard.h"

using platform::ComPtr;
using platform::Guard;

namespace {

// A host's simple source may hand itself out for any id. Whoever has the interface of this one,
// which is nobody's, has none that is optional.
bool AnswersEveryQuery(IUnknown& source) {
  constexpr IID kNobodys = base::Guid("{CE11BF10-BF96-41C4-8417-34C3253A5148}");
  ComPtr<IUnknown> answer;
  source.QueryInterface(kNobodys, answer.PutVoid());
  return static_cast<bool>(answer);
}

}  // namespace

// A lender that throws, or gives no rows, has not lent.
RowLoan::RowLoan(IUnknown* source, int width, int height) {
  if (width < 1 || height < 1) return;
  auto asked = ComPtr<IAnimRowLender>::Query(source);
  if (!asked || AnswersEveryQuery(*source)) return;
  base::RowView lent{nullptr, nullptr, width, height};
  if (Guard([&] { return asked->LendRows(width, height, &lent.colour, &lent.mask); }) != S_OK) {
    return;
  }
  lender = std::move(asked);
  rows = lent;
  if (!rows.colour || !rows.mask) *this = {};
}

RowLoan::RowLoan(RowLoan&& other) noexcept
    : lender(std::move(other.lender)), rows(std::exchange(other.rows, {})) {}

RowLoan& RowLoan::operator=(RowLoan other) noexcept {
  std::swap(lender, other.lender);
  std::swap(rows, other.rows);
  return *this;
}

RowLoan::~RowLoan() {
  if (lender) Guard([this] { return lender->ReturnRows(); });
}
