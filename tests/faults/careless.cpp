// careless MISTAKE FILE: replaces a file and makes the mistake that the checks of system faults must report:
//   none         nothing is wrong
//   ignoring     failures of write and fsync are ignored
//   impatient    an interrupted call is a failure
//   trusting     write is believed to write everything
//   in_place     the file itself is written
//   untidy       the new file stays after a failure
//   mute         a failure has no message
//   misleading   a failure has a message with another reason
//   crashing     a failure ends the program by a signal
//   waiting      a write that fails is waited for
//   retrying     a write that fails is repeated for ever
//   stuck        a new file that a killed program left is a failure
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

std::string_view mistake;

bool Makes(std::string_view name) {
  return mistake == name;
}

template <typename Call>
auto Patiently(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR && !Makes("impatient")) result = call();
  return result;
}

bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t put = Patiently([&] { return write(file, text.data(), text.size()); });
    if (put < 0 && Makes("waiting")) pause();
    if (put < 0 && Makes("retrying")) continue;
    if (put < 0) return Makes("ignoring");
    if (Makes("trusting")) return true;
    text.remove_prefix(static_cast<size_t>(put));
  }
  return Patiently([&] { return fsync(file); }) == 0 || Makes("ignoring");
}

bool Replace(const std::string& name) {
  const std::string fresh = Makes("in_place") ? name : name + ".new";
  if (!Makes("in_place") && !Makes("stuck")) unlink(fresh.c_str());
  const int flags = O_WRONLY | O_CREAT | (Makes("in_place") ? O_TRUNC : O_EXCL);
  const int file = Patiently([&] { return open(fresh.c_str(), flags, 0644); });
  if (file < 0) return false;
  const bool is_written = WriteAll(file, std::string(1000, 'n'));
  close(file);
  if (is_written && (Makes("in_place") || rename(fresh.c_str(), name.c_str()) == 0)) return true;
  if (!Makes("untidy") && !Makes("in_place")) unlink(fresh.c_str());
  return false;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) return 2;
  mistake = words[1];
  if (Replace(words[2])) return 0;
  if (Makes("crashing")) abort();
  const char* const reason = Makes("misleading") ? ": No such file or directory" : "";
  if (!Makes("mute")) fprintf(stderr, "careless: %s cannot be written%s\n", words[2], reason);
  return 1;
}
