#include "objects/member_table.h"

namespace mirolta::host {
namespace {

// An object that makes new type information for each call does not fill the memory.
constexpr size_t kMostTables = 256;

}  // namespace

DescribedMembers* DescribedTables::Of(ITypeInfo* info) {
  for (const auto& table : tables_) {
    if (table->info.Get() == info) return table.get();
  }
  if (tables_.size() >= kMostTables) return nullptr;
  tables_.push_back(std::make_unique<DescribedMembers>());
  tables_.back()->info.Assign(info);
  return tables_.back().get();
}

bool IsDescribed(ITypeInfo* info, DISPID id, bool* is_method) {
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return false;
  const UINT count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(i, &function))) return false;
    const bool is_found = function->memid == id;
    if (is_found) *is_method = function->invkind == INVOKE_FUNC;
    info->ReleaseFuncDesc(function);
    if (is_found) return true;
  }
  return false;
}

}  // namespace mirolta::host
