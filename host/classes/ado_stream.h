// ADODB.Stream: bytes in memory, read and written as bytes or as text.
#pragma once

#include "classes/ado_bytes.h"
#include "classes/ado_text.h"
#include "classes/host_object.h"

namespace mirolta::host {

class AdoStream final : public HostObject {
 public:
  AdoStream() : bytes_(this) {}
  const HostClass& Class() const override;

  void GetSize(HostCall& call) const;
  void GetEos(HostCall& call) const;
  void GetPosition(HostCall& call) const;
  void PutPosition(HostCall& call);
  void GetType(HostCall& call) const;
  void PutType(HostCall& call);
  void GetLineSeparator(HostCall& call) const;
  void PutLineSeparator(HostCall& call);
  void GetState(HostCall& call) const;
  void GetMode(HostCall& call) const;
  void PutMode(HostCall& call);
  void GetCharset(HostCall& call) const;
  void PutCharset(HostCall& call);
  void Open(HostCall& call);
  void Close(HostCall& call);
  void Read(HostCall& call);
  void Write(HostCall& call);
  void ReadText(HostCall& call);
  void WriteText(HostCall& call);
  void SkipLine(HostCall& call);
  void SetEos(HostCall& call);
  void CopyTo(HostCall& call);
  void LoadFromFile(HostCall& call);
  void SaveToFile(HostCall& call);
  void Flush(HostCall& call);
  void Cancel(HostCall& call);

 private:
  enum class Type : int32_t { kBinary = 1, kText = 2 };

  ~AdoStream() override = default;
  void* OtherInterface(REFIID iid) override;

  // Each throws the error if the stream is not as needed.
  void RequireOpen() const;
  void RequireStart() const;  // if it is open
  void RequireType(Type type) const;
  void RequireReading(Type type) const;
  void RequireWriting(Type type) const;

  // Skips the mark of the character set at the start.
  void SkipMark();
  Units NextCharacters(uint64_t count);
  // The bytes up to the next line separator or the end; the position is behind the separator then.
  std::string NextLine();
  void PutText(UnitsView text);

  AdoBytes bytes_;
  Type type_ = Type::kText;
  int32_t mode_ = 0;
  int32_t line_separator_ = -1;
  Units charset_name_ = OLESTR("Unicode");
  TextCharset charset_;
};

extern const HostClass kAdoStreamClass;
// Errors: throws std::bad_alloc.
HostObject* NewAdoStream();

}  // namespace mirolta::host
