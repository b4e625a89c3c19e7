// RowLoan: the rows of a picture that a source has lent to a pull.
#pragma once

#include "base/Export.h"
#include "base/RowView.h"
#include "core/AnimRowLender.h"
#include "platform/component/ComPtr.h"

// Gives them back when it is destroyed or overwritten, on the thread that made it.
class FXBOX_API RowLoan {
 public:
  RowLoan() = default;
  // Asks for all rows of a picture of this size. There is no loan when the source does not lend.
  RowLoan(IUnknown* source, int width, int height);
  RowLoan(RowLoan&& other) noexcept;
  // What was lent before goes back last.
  RowLoan& operator=(RowLoan other) noexcept;
  ~RowLoan();

  explicit operator bool() const { return lender.Get() != nullptr; }
  const base::RowView& Rows() const { return rows; }

 private:
  platform::ComPtr<IAnimRowLender> lender;  // while there is a loan
  base::RowView rows;
};
