#include "classes/text_stream.h"

#include <algorithm>
#include <new>
#include <utility>

#include "engine/file_statuses.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

constexpr HostMember kMembers[] = {
    {"Read", 1, MemberKind::kMethod, 1, 1, CallMember<&TextStream::Read>, nullptr,
     "(count As Long) As String",
     "Returns the next characters, fewer only at the end of the text."},
    {"ReadLine", 2, MemberKind::kMethod, 0, 0, CallMember<&TextStream::ReadLine>, nullptr,
     "() As String", "Returns the rest of the line without its line end, which is skipped."},
    {"ReadAll", 3, MemberKind::kMethod, 0, 0, CallMember<&TextStream::ReadAll>, nullptr,
     "() As String", "Returns the rest of the text."},
    {"Skip", 4, MemberKind::kMethod, 1, 1, CallMember<&TextStream::Skip>, nullptr,
     "(count As Long)", "Skips the next characters."},
    {"SkipLine", 5, MemberKind::kMethod, 0, 0, CallMember<&TextStream::SkipLine>, nullptr, "()",
     "Skips the rest of the line and its line end."},
    {"Write", 6, MemberKind::kMethod, 1, kAnyCount, CallMember<&TextStream::Write>, nullptr,
     "(text As Variant, ...)", "Writes a text; several are separated by spaces."},
    {"WriteLine", 7, MemberKind::kMethod, 0, kAnyCount, CallMember<&TextStream::WriteLine>, nullptr,
     "([text As Variant], ...)",
     "Writes a text and a line end: CR LF in files, LF on the standard streams."},
    {"WriteBlankLines", 8, MemberKind::kMethod, 1, 1, CallMember<&TextStream::WriteBlankLines>,
     nullptr, "(count As Long)", "Writes line ends."},
    {"Close", 9, MemberKind::kMethod, 0, 0, CallMember<&TextStream::Close>, nullptr, "()",
     "Closes the stream; a new file takes the place of the old one."},
    {"AtEndOfStream", 10, MemberKind::kProperty, 0, 0, CallMember<&TextStream::GetAtEndOfStream>,
     nullptr, " As Boolean",
     "Whether the text has been read to its end; waits for the next character."},
    {"AtEndOfLine", 11, MemberKind::kProperty, 0, 0, CallMember<&TextStream::GetAtEndOfLine>,
     nullptr, " As Boolean", "Whether a line end or the end of the text is next."},
    {"Line", 12, MemberKind::kProperty, 0, 0, CallMember<&TextStream::GetLine>, nullptr, " As Long",
     "The number of the line, from 1."},
    {"Column", 13, MemberKind::kProperty, 0, 0, CallMember<&TextStream::GetColumn>, nullptr,
     " As Long", "The number of the next character in its line, from 1."},
    {"IsTerminal", 14, MemberKind::kProperty, 0, 0, CallMember<&TextStream::GetIsTerminal>, nullptr,
     " As Boolean", "Whether the stream is a terminal. Not on the platform's own host."},
};
static_assert(IsWellFormed(kMembers));

// The argument as a count of characters or lines.
size_t CountAt(const HostCall& call) {
  const int32_t count = call.Integer(0);
  if (count < 0) Fail(kInvalidCall);
  return static_cast<size_t>(count);
}

// The arguments as WScript.Echo prints them.
Units JoinedArguments(const HostCall& call) {
  Units text;
  for (UINT i = 0; i < call.Count(); ++i) {
    if (i > 0) text += OLECHAR{' '};
    const VARIANT& value = call.At(i);
    text += value.vt == VT_NULL ? Units(OLESTR("null")) : HostCall::TextOf(value);
  }
  return text;
}

bool IsHighSurrogate(OLECHAR unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

std::string Utf16Bytes(UnitsView text) {
  std::string bytes;
  bytes.reserve(2 * text.size());
  for (const OLECHAR unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

}  // namespace

constinit const HostClass TextStream::kClass = {"TextStream",
                                                "Text of a file or a standard stream.", kMembers};

TextStream::TextStream(std::unique_ptr<ByteChannel> channel, Direction direction,
                       const TextStreamOptions& options)
    : channel_(std::move(channel)), options_(options) {
  if (direction == Direction::kRead) {
    reader_.emplace(channel_.get(), options.encoding, options.skips_mark);
  }
  channel_->Keep();
}

TextStream::~TextStream() {
  // Not closed: a new file goes into place when the script ends.
  if (channel_ == nullptr || half_.empty()) return;
  try {
    static_cast<void>(PutEncoded(half_));
  } catch (const std::bad_alloc&) {
    // Half a character is lost; the memory was needed elsewhere.
    half_.clear();
  }
}

TextReader& TextStream::Reader() {
  if (channel_ == nullptr) Fail(kStreamGone);
  if (!reader_) Fail(kBadFileMode);
  return *reader_;
}

ByteChannel& TextStream::Writer() {
  if (channel_ == nullptr) Fail(kStreamGone);
  if (reader_) Fail(kBadFileMode);
  return *channel_;
}

const TextPosition& TextStream::Position() const {
  if (channel_ == nullptr) Fail(kStreamGone);
  return reader_ ? reader_->Position() : written_;
}

HRESULT TextStream::PutEncoded(UnitsView text) {
  const bool is_wide = options_.encoding == TextEncoding::kUtf16;
  return channel_->Write(is_wide ? Utf16Bytes(text) : SystemFromUnits(text));
}

void TextStream::Put(UnitsView text) {
  const ByteChannel& channel = Writer();
  Units all = half_;
  all += text;
  Units half;
  if (!all.empty() && IsHighSurrogate(all.back())) {
    half = all.back();
    all.pop_back();
  }
  const HRESULT status = PutEncoded(all);
  if (FAILED(status)) Fail(status, channel.WriteFailure());
  half_ = std::move(half);
  written_.Advance(text);
}

void TextStream::Read(HostCall& call) {
  // First: the conversion of the argument may run a script that closes the stream.
  const size_t count = CountAt(call);
  call.ReturnText(Reader().Read(count));
}

void TextStream::ReadLine(HostCall& call) {
  call.ReturnText(Reader().ReadLine());
}

void TextStream::ReadAll(HostCall& call) {
  call.ReturnText(Reader().ReadAll());
}

void TextStream::Skip(HostCall& call) {
  const size_t count = CountAt(call);
  Reader().Skip(count);
}

void TextStream::SkipLine(HostCall&) {
  Reader().SkipLine();
}

void TextStream::Write(HostCall& call) {
  Put(JoinedArguments(call));
}

void TextStream::WriteLine(HostCall& call) {
  Units text = JoinedArguments(call);
  text += UnitsFromSystem(options_.line_end);
  Put(text);
}

void TextStream::WriteBlankLines(HostCall& call) {
  size_t left = CountAt(call);
  static_cast<void>(Writer());
  const Units line_end = UnitsFromSystem(options_.line_end);
  // In blocks: the number of lines has no bound.
  constexpr size_t kLines = 4096;
  Units block;
  while (left != 0) {
    const size_t lines = std::min(left, kLines);
    while (block.size() < lines * line_end.size()) block += line_end;
    Put(UnitsView(block).substr(0, lines * line_end.size()));
    left -= lines;
  }
}

void TextStream::Close(HostCall&) {
  if (channel_ == nullptr) return;
  HRESULT status = S_OK;
  if (!half_.empty()) status = PutEncoded(half_);
  half_.clear();
  const std::unique_ptr<ByteChannel> channel = std::move(channel_);
  const HRESULT closed = channel->Close();
  if (SUCCEEDED(status)) status = closed;
  if (FAILED(status)) Fail(status, channel->WriteFailure());
}

void TextStream::GetAtEndOfStream(HostCall& call) {
  call.ReturnTruth(Reader().IsAtEnd());
}

void TextStream::GetAtEndOfLine(HostCall& call) {
  call.ReturnTruth(Reader().IsAtLineEnd());
}

void TextStream::GetLine(HostCall& call) {
  call.ReturnInteger(Position().line);
}

void TextStream::GetColumn(HostCall& call) {
  call.ReturnInteger(Position().column);
}

void TextStream::GetIsTerminal(HostCall& call) {
  call.ReturnTruth(channel_ != nullptr && channel_->IsTerminal());
}

TextStream* StandardStream(StandardStreamNumber number) {
  static TextStream* streams[3] = {};
  TextStream*& stream = streams[static_cast<size_t>(number)];
  if (stream == nullptr) {
    using Direction = TextStream::Direction;
    TextStreamOptions options;
    options.line_end = "\n";
    stream = number == StandardStreamNumber::kInput
                 ? new TextStream(StandardInput(), Direction::kRead, options)
                 : new TextStream(
                       StandardOutput(number == StandardStreamNumber::kOutput ? stdout : stderr),
                       Direction::kWrite, options);
  }
  stream->AddRef();
  return stream;
}

}  // namespace mirolta::host
