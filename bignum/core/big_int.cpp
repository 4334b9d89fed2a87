#include "big_int.h"

#include <bit>
#include <cstring>
#include <new>

#include "limb_basics.h"

namespace mirolta {

namespace {

BigMagnitude* NewMagnitude(uint32_t words) {
  BigMagnitude* const fresh = new (std::nothrow) BigMagnitude;
  if (fresh != nullptr && !fresh->Reserve(words)) {
    delete fresh;
    return nullptr;
  }
  return fresh;
}

}  // namespace

BigInt::BigInt(uint32_t word) noexcept {
  if (word == 0) return;
  magnitude_ = NewMagnitude(1);
  if (magnitude_ == nullptr) {
    status_ = E_OUTOFMEMORY;
  } else {
    magnitude_->SetSmall(word);
  }
}

BigInt::BigInt(const BigInt& other) noexcept
    : magnitude_(other.magnitude_), negative_(other.negative_), status_(other.status_) {
  // Relaxed: the copied number is an owner, so that nobody deletes or changes the magnitude meanwhile.
  if (magnitude_ != nullptr) magnitude_->share_count.fetch_add(1, std::memory_order_relaxed);
}

BigInt::BigInt(BigInt&& other) noexcept {
  Swap(other);
}

BigInt& BigInt::operator=(const BigInt& other) noexcept {
  BigInt copy(other);
  Swap(copy);
  return *this;
}

BigInt& BigInt::operator=(BigInt&& other) noexcept {
  BigInt taken;
  taken.Swap(other);
  Swap(taken);
  return *this;
}

BigInt::~BigInt() {
  Release();
}

BigInt BigInt::Failed(HRESULT status) noexcept {
  BigInt failed;
  failed.status_ = status;
  return failed;
}

// Initialised at compile time, and so before other static objects.
// NOLINTNEXTLINE(clang-diagnostic-global-constructors,clang-diagnostic-exit-time-destructors): empty
constinit const BigMagnitude BigInt::kZero;

void BigInt::Swap(BigInt& other) noexcept {
  BigMagnitude* const magnitude = magnitude_;
  const int32_t negative = negative_;
  const HRESULT status = status_;
  magnitude_ = other.magnitude_;
  negative_ = other.negative_;
  status_ = other.status_;
  other.magnitude_ = magnitude;
  other.negative_ = negative;
  other.status_ = status;
}

void BigInt::Release() noexcept {
  if (magnitude_ == nullptr) return;
  // The last owner deletes the magnitude. Of two that release it at once, the second decrements
  // zero. Reads of an owner happen before it releases (the release of acq_rel), and so before what
  // follows an acquire that sees its decrement: here the deletion, below a change in place.
  if (magnitude_->share_count.load(std::memory_order_acquire) == 0 ||
      magnitude_->share_count.fetch_sub(1, std::memory_order_acq_rel) == 0) {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the analyser does not follow the count.
    delete magnitude_;
  }
  magnitude_ = nullptr;
}

HRESULT BigInt::MakePrivate() noexcept {
  if (magnitude_ != nullptr && magnitude_->share_count.load(std::memory_order_acquire) == 0) {
    return S_OK;
  }
  BigMagnitude* const fresh = NewMagnitude(Used());
  if (fresh == nullptr) return E_OUTOFMEMORY;
  fresh->CopyFrom(Magnitude());
  Release();
  magnitude_ = fresh;
  return S_OK;
}

BigMagnitude* BigInt::Room(uint32_t words) noexcept {
  if (magnitude_ == nullptr || magnitude_->Capacity() < words ||
      magnitude_->share_count.load(std::memory_order_acquire) != 0) {
    BigMagnitude* const fresh = NewMagnitude(words);
    if (fresh == nullptr) return nullptr;
    Release();
    magnitude_ = fresh;
  }
  status_ = S_OK;
  return magnitude_;
}

BigMagnitude* BigInt::Rewrite(uint32_t words) noexcept {
  BigMagnitude* const m = Room(words);
  if (m != nullptr) m->ClearTo(words);
  return m;
}

Limb* BigInt::BeginLimbs(size_t n) noexcept {
  if (n > UINT32_MAX / kLimbWords) return nullptr;
  BigMagnitude* const m = Room(static_cast<uint32_t>(n * kLimbWords));
  // memmove onto itself creates limbs there, as the language asks, and compiles to nothing.
  return m != nullptr ? static_cast<Limb*>(std::memmove(m->words_, m->words_, n * sizeof(Limb)))
                      : nullptr;
}

void BigInt::EndLimbs(Limb* limbs, size_t n) noexcept {
  BigMagnitude& m = *magnitude_;
  if constexpr (std::endian::native == std::endian::little) {
    m.words_ = static_cast<uint32_t*>(std::memmove(limbs, limbs, n * sizeof(Limb)));
  } else {
    for (size_t i = 0; i < n; ++i) {
      const Limb limb = limbs[i];
      WordsFromLimbs(m.words_ + i * kLimbWords, &limb, kLimbWords);
    }
  }
  m.used_ = static_cast<uint32_t>(n * kLimbWords);
  if (n != 0 && m.words_[m.used_ - 1] == 0) m.DropZeroWords();
}

HRESULT BigInt::AssignLimbs(const Limb* x, size_t n) noexcept {
  n = SignificantLimbs(x, n);
  size_t words = n * kLimbWords;
  if (kLimbWords == 2 && n != 0 && x[n - 1] >> 16 >> 16 == 0) --words;
  if (words > UINT32_MAX) return E_OUTOFMEMORY;
  BigMagnitude* const m = Room(static_cast<uint32_t>(words));
  if (m == nullptr) return E_OUTOFMEMORY;
  WordsFromLimbs(m->words_, x, words);
  m->used_ = static_cast<uint32_t>(words);
  return S_OK;
}

int Compare(const BigInt& a, const BigInt& b) noexcept {
  const bool below_a = a.IsNegative();
  const bool below_b = b.IsNegative();
  if (below_a != below_b) return below_a ? -1 : 1;
  return BigMagnitude::Compare(a.Magnitude(), b.Magnitude());
}

HRESULT BigInt::Add(const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(*this, b);
  if (FAILED(failure)) return failure;
  if (negative_ == b.negative_) {
    const HRESULT status = MakePrivate();
    if (FAILED(status)) return status;
    return magnitude_->Add(b.Magnitude()) ? S_OK : E_OUTOFMEMORY;
  }
  if (BigMagnitude::Compare(Magnitude(), b.Magnitude()) < 0) {
    BigInt larger(b);
    const HRESULT status = larger.Add(*this);
    if (SUCCEEDED(status)) Swap(larger);
    return status;
  }
  const HRESULT status = MakePrivate();
  if (SUCCEEDED(status)) magnitude_->Subtract(b.Magnitude());
  return status;
}

HRESULT BigInt::Subtract(const BigInt& b) noexcept {
  const HRESULT failure = FirstFailure(*this, b);
  if (FAILED(failure)) return failure;
  if (negative_ != b.negative_) {
    const HRESULT status = MakePrivate();
    if (FAILED(status)) return status;
    return magnitude_->Add(b.Magnitude()) ? S_OK : E_OUTOFMEMORY;
  }
  if (BigMagnitude::Compare(Magnitude(), b.Magnitude()) < 0) {
    BigInt larger(b);
    const HRESULT status = larger.Subtract(*this);
    if (FAILED(status)) return status;
    larger.negative_ = 1 - larger.negative_;
    Swap(larger);
    return S_OK;
  }
  const HRESULT status = MakePrivate();
  if (SUCCEEDED(status)) magnitude_->Subtract(b.Magnitude());
  return status;
}

}  // namespace mirolta
