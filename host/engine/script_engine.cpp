#include "engine/script_engine.h"

#include <setjmp.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <new>
#include <optional>

#include "engine/engine_block.h"
#include "engine/error_report.h"
#include "engine/host_errors.h"
#include "engine/interruption.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "engine/time_limit.h"
#include "files/output_file.h"
#include "objects/bytes_object.h"
#include "objects/date_class.h"
#include "objects/dispatch_object.h"
#include "objects/enumerator.h"
#include "objects/language_functions.h"
#include "objects/letter_case.h"
#include "objects/member_function.h"
#include "objects/script_object.h"
#include "objects/wscript_object.h"
#include "source/member_uses.h"
#include "source/script_source.h"
#include "values/array_value.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

void* Resize(ScriptContext* context, void* block, size_t size) {
  const size_t old_size = block != nullptr ? HeaderOf(block)->size : 0;
  const size_t limit = context->memory_limit;
  // An engine without memory throws an error, also in a script that calls no native function.
  if (size > old_size && IsInterrupted()) return nullptr;
  if (size > old_size && (size > limit || context->memory_in_use - old_size > limit - size)) {
    return nullptr;
  }
  MemoryRefusals& refusals = context->refusals;
  if (size > old_size && refusals.IsUseless(size)) return nullptr;
  void* start = block != nullptr ? HeaderOf(block) : nullptr;
  auto* grown = static_cast<BlockHeader*>(realloc(start, sizeof(BlockHeader) + size));
  if (grown == nullptr) {
    refusals.NoteRefused(size);
    return nullptr;
  }
  if (block != nullptr) refusals.NoteFreed();
  refusals.NoteGranted();
  context->memory_in_use += size - old_size;
  grown->size = size;
  if (block == nullptr) grown->slot = kNoSlot;
  return grown + 1;
}

void Free(void* context, void* block) {
  if (block == nullptr) return;
  auto* const script = static_cast<ScriptContext*>(context);
  script->memory_in_use -= HeaderOf(block)->size;
  if (HeaderOf(block)->slot != kNoSlot) script->objects.Drop(HeaderOf(block)->slot, block);
  script->refusals.NoteFreed();
  free(HeaderOf(block));
}

constexpr char kNoMemory[] = "not enough memory for the script engine";

[[noreturn]] void EndFor(const char* reason, const char* detail) {
  FlushOutput();
  DiscardOutputs();
  fprintf(stderr, "mirolta-host: %s%s\n", reason, detail);
  _Exit(1);
}

// An engine that has no memory while it is created throws an error, which needs memory, and so on
// until the stack overflows. The failures that it recovers from by collecting garbage are fewer.
constexpr unsigned kMostCreationFailures = 64;

void* NoMemory(ScriptContext* context) {
  if (context->creation != nullptr && ++context->creation_failures > kMostCreationFailures) {
    // NOLINTNEXTLINE(cert-err52-cpp): the engine's own code, which is C, takes no exception.
    longjmp(*context->creation, 1);
  }
  // An interrupted engine recovers.
  if (!IsInterrupted() && context->refusals.NoteFailed()) EndFor(kNoMemory, "");
  return nullptr;
}

void* Allocate(void* data, duk_size_t size) {
  if (size == 0) return nullptr;
  auto* const context = static_cast<ScriptContext*>(data);
  void* const block = Resize(context, nullptr, size);
  return block != nullptr ? block : NoMemory(context);
}

void* Reallocate(void* data, void* block, duk_size_t size) {
  if (size == 0) {
    Free(data, block);
    return nullptr;
  }
  auto* const context = static_cast<ScriptContext*>(data);
  void* const resized = Resize(context, block, size);
  return resized != nullptr ? resized : NoMemory(context);
}

// Called when the engine cannot continue: no memory where it needs some, or misuse by the host.
[[noreturn]] void EndOnFatal(void*, const char* message) {
  EndFor("the script engine failed: ", message != nullptr ? message : "no reason given");
}

// Returns null without memory; what the engine had then stays allocated. Nothing between setjmp and
// longjmp has a destructor.
duk_context* CreateEngine(ScriptContext* context) {
  jmp_buf out;
  context->creation = &out;
  context->creation_failures = 0;
  duk_context* volatile engine = nullptr;
  // NOLINTNEXTLINE(cert-err52-cpp): as above.
  if (setjmp(out) == 0) engine = duk_create_heap(Allocate, Reallocate, Free, context, EndOnFatal);
  context->creation = nullptr;
  return engine;
}

void InstallAll(duk_context* engine) {
  InstallNames(engine);
  InstallErrors(engine);
  InstallMarshalling(engine);
  InstallMemberFunctions(engine);
  InstallDispatchObjects(engine);
  InstallVbArray(engine);
  InstallEnumerator(engine);
  InstallLanguageFunctions(engine);
  InstallLetterCase(engine);
  InstallDateClass(engine);
  InstallWScript(engine);
  InstallBytes(engine);
  MakeLink(engine);
  ContextOf(engine).call_sites.Learn(engine);
  // They give access to the engine's internals.
  duk_push_global_object(engine);
  for (const char* name : {"Duktape", "CBOR"}) duk_del_prop_string(engine, -1, name);
}

duk_ret_t Install(duk_context* engine, void*) {
  return ThrowIfExhausted(engine, [&] {
    InstallAll(engine);
    return 0;
  });
}

struct Program {
  std::string name;  // in the engine's form
  std::string_view text;
  MemberUses uses;
  bool is_compiled = false;
};

duk_ret_t CompileAndRun(duk_context* engine, void* data) {
  auto* script = static_cast<Program*>(data);
  ThrowIfExhausted(engine, [&] {
    ContextOf(engine).call_sites.NoteScript(engine, script->uses);
    return 0;
  });
  duk_push_lstring(engine, script->name.data(), script->name.size());
  duk_compile_lstring_filename(engine, 0, script->text.data(), script->text.size());
  script->is_compiled = true;
  duk_call(engine, 0);
  return 1;
}

// Returns whether the script succeeded; reports its error.
bool RunIn(ScriptEngine* engine, Program* program, bool is_interruptible) {
  bool succeeded = false;
  {
    std::optional<InterruptibleCommand> command;
    if (is_interruptible) command.emplace();
    succeeded = duk_safe_call(engine->Api(), CompileAndRun, program, 0, 1) == DUK_EXEC_SUCCESS;
  }
  fflush(stdout);
  if (!succeeded) ReportUncaught(engine->Api(), program->is_compiled);
  duk_pop(engine->Api());
  return succeeded;
}

int RunProgram(const ScriptText& script, Program* program, const RunOptions& options) {
  bool succeeded = false;
  {
    ScriptEngine engine;
    engine.Context().script_path = script.name;
    engine.Context().script_full_path = script.full_path;
    engine.Context().scripts.push_back(&script);
    engine.Context().arguments = options.arguments;
    engine.Context().is_batch = options.is_batch;
    engine.Context().is_interactive = options.follow != nullptr;
    std::string problem;
    if (!engine.Start(&problem)) {
      fprintf(stderr, "mirolta-host: %s\n", problem.c_str());
      return 1;
    }
    if (options.prepare != nullptr) options.prepare(&engine);
    if (options.time_limit > 0 && FAILED(SetTimeLimit(&engine.Context(), options.time_limit))) {
      return 1;
    }
    succeeded = RunIn(&engine, program, options.follow != nullptr);
    if (options.follow != nullptr) succeeded = options.follow(&engine);
  }
  succeeded = FlushOutput() && succeeded && FinishOutputs();
  DiscardOutputs();
  return succeeded ? 0 : 1;
}

}  // namespace

ScriptEngine::~ScriptEngine() {
  // Automation may hold script objects that outlive the engine.
  if (context_.link != nullptr) CutLink(context_.link);
  if (context_.engine != nullptr) duk_destroy_heap(context_.engine);
  context_.objects.Clear();
}

bool ScriptEngine::Start(std::string* problem) {
  duk_context* engine = CreateEngine(&context_);
  if (engine == nullptr) {
    *problem = kNoMemory;
    return false;
  }
  context_.engine = engine;
  const bool is_installed = duk_safe_call(engine, Install, nullptr, 0, 1) == DUK_EXEC_SUCCESS;
  duk_pop(engine);
  if (is_installed && context_.link != nullptr) return true;
  *problem = kNoMemory;  // nothing else can be missing, and the error often has no text then
  return false;
}

int RunScript(const ScriptText& script, const RunOptions& options) {
  try {
    Program program;
    program.text = script.text;
    program.uses = FindMemberUses(script.text);
    program.name = EngineFromUnits(UnitsFromSystem(script.name));
    return RunProgram(script, &program, options);
  } catch (const std::bad_alloc&) {
    DiscardOutputs();
    fputs("mirolta-host: not enough memory\n", stderr);
    return 1;
  }
}

}  // namespace mirolta::host
