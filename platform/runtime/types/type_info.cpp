// Type information of dispatch interfaces and classes, served from a copied library.
#include "mirolta/module.h"
#include "texts/wide_text.h"
#include "types/documentation.h"
#include "types/library_object.h"
#include "types/type_info_invoke.h"

namespace mirolta::runtime {

namespace {

constexpr WORD kDispatchSlots = 7;  // IUnknown's and IDispatch's own
constexpr HREFTYPE kDispatchReference = 0x7FFFFFFF;

// A function description with room for what it points to.
struct FunctionBlock {
  FUNCDESC description;
  ELEMDESC elements[kMaxParameters];
  PARAMDESCEX defaults[kMaxParameters];
  TYPEDESC pointee;
};

class TypeInfo final : public LibraryObject<ITypeInfo, IID_ITypeInfo> {
 public:
  TypeInfo(CopiedLibrary* library, UINT index) : LibraryObject(library), index_(index) {}

  HRESULT GetTypeAttr(TYPEATTR** out) override {
    if (out == nullptr) return E_INVALIDARG;
    *out = static_cast<TYPEATTR*>(AllocateRuntime(sizeof(TYPEATTR)));
    if (*out == nullptr) return E_OUTOFMEMORY;
    TYPEATTR& attributes = **out;
    attributes = TYPEATTR{};
    attributes.memidConstructor = DISPID_UNKNOWN;
    attributes.memidDestructor = DISPID_UNKNOWN;
    attributes.cImplTypes = IsDispatch() ? 0 : 1;
    attributes.cbAlignment = alignof(void*);
    attributes.wMajorVerNum = IsDispatch() ? WORD{0} : library_->table.major;
    attributes.wMinorVerNum = IsDispatch() ? WORD{0} : library_->table.minor;
    if (IsClass()) {
      attributes.guid = *Class().id;
      attributes.typekind = TKIND_COCLASS;
      attributes.wTypeFlags = TYPEFLAG_FCANCREATE;
      return S_OK;
    }
    attributes.cbSizeInstance = sizeof(void*);
    attributes.cbSizeVft = kDispatchSlots * sizeof(void*);
    attributes.typekind = TKIND_DISPATCH;
    attributes.wTypeFlags = TYPEFLAG_FDISPATCHABLE;
    if (IsDispatch()) {
      attributes.guid = IID_IDispatch;
      return S_OK;
    }
    attributes.guid = *Interface().iid;
    attributes.cFuncs = static_cast<WORD>(Interface().member_count);
    attributes.wTypeFlags |= TYPEFLAG_FDUAL;
    return S_OK;
  }
  void ReleaseTypeAttr(TYPEATTR* attributes) override { FreeRuntime(attributes); }

  HRESULT GetTypeComp(ITypeComp** out) override {
    if (out != nullptr) *out = nullptr;
    return E_NOTIMPL;
  }

  HRESULT GetFuncDesc(UINT index, FUNCDESC** out) override {
    if (out == nullptr) return E_INVALIDARG;
    *out = nullptr;
    if (!HasMembers() || index >= Interface().member_count) return TYPE_E_ELEMENTNOTFOUND;
    FunctionBlock* const block = NewRuntime<FunctionBlock>();
    if (block == nullptr) return E_OUTOFMEMORY;
    Describe(Interface().members[index], index, *block);
    *out = &block->description;
    return S_OK;
  }
  void ReleaseFuncDesc(FUNCDESC* description) override {
    // The description is the block's first member.
    FreeRuntime(description);
  }

  HRESULT GetVarDesc(UINT, VARDESC** out) override {
    if (out != nullptr) *out = nullptr;
    return TYPE_E_ELEMENTNOTFOUND;
  }
  void ReleaseVarDesc(VARDESC*) override {}

  HRESULT GetNames(MEMBERID id, BSTR* names, UINT capacity, UINT* count) override {
    if (names == nullptr || count == nullptr) return E_INVALIDARG;
    *count = 0;
    const MemberRow* row = FindMember(id);
    if (row == nullptr) return TYPE_E_ELEMENTNOTFOUND;
    if (capacity == 0) return S_OK;
    // The value of a put has no name of its own.
    const bool puts = row->kind == kPut || row->kind == kPutRef;
    const unsigned named = row->parameters.Count() - (puts ? 1 : 0);
    HRESULT status = AppendName(row->name, names, count);
    for (unsigned i = 0; i < named && *count < capacity && SUCCEEDED(status); ++i) {
      status = AppendName(row->parameters.rows[i].name, names, count);
    }
    if (FAILED(status)) {
      while (*count > 0) SysFreeString(names[--*count]);
    }
    return status;
  }

  HRESULT GetRefTypeOfImplType(UINT index, HREFTYPE* type) override {
    if (type == nullptr) return E_INVALIDARG;
    if (index != 0 || IsDispatch()) return TYPE_E_ELEMENTNOTFOUND;
    *type = IsClass() ? IndexOf(Class().default_interface) : kDispatchReference;
    return S_OK;
  }

  HRESULT GetImplTypeFlags(UINT index, INT* flags) override {
    if (flags == nullptr) return E_INVALIDARG;
    if (index != 0 || IsDispatch()) return TYPE_E_ELEMENTNOTFOUND;
    *flags = IsClass() ? IMPLTYPEFLAG_FDEFAULT : 0;
    return S_OK;
  }

  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override {
    if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
    for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
    const MemberRow* row = HasMembers() ? FindMemberNamed(names[0]) : nullptr;
    if (row == nullptr) return DISP_E_UNKNOWNNAME;
    ids[0] = row->id;
    HRESULT status = S_OK;
    for (UINT i = 1; i < count; ++i) {
      for (unsigned k = 0; names[i] != nullptr && k < row->parameters.Count(); ++k) {
        if (EqualsIgnoringAsciiCase(row->parameters.rows[k].name, names[i]))
          ids[i] = static_cast<MEMBERID>(k);
      }
      if (ids[i] == DISPID_UNKNOWN) status = DISP_E_UNKNOWNNAME;
    }
    return status;
  }

  HRESULT Invoke(PVOID instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* exception, UINT* bad_argument) override {
    if (!HasMembers()) return DISP_E_MEMBERNOTFOUND;
    return InvokeMember(Interface(), instance, id, flags, params, result, exception, bad_argument);
  }

  HRESULT GetDocumentation(MEMBERID id, BSTR* name, BSTR* help, DWORD* help_context,
                           BSTR* help_file) override {
    const OLECHAR* name_text = nullptr;
    const OLECHAR* help_text = nullptr;
    if (id == -1) {
      name_text = IsDispatch() ? OLESTR("IDispatch") : IsClass() ? Class().name : Interface().name;
      help_text = IsDispatch() ? nullptr : IsClass() ? Class().help : Interface().help;
    } else {
      const MemberRow* row = FindMember(id);
      if (row == nullptr) return TYPE_E_ELEMENTNOTFOUND;
      name_text = row->name;
      help_text = row->help;
    }
    return CopyDocumentation(name_text, help_text, name, help, help_context, help_file);
  }

  HRESULT GetDllEntry(MEMBERID, INVOKEKIND, BSTR* dll, BSTR* name, WORD* ordinal) override {
    if (dll != nullptr) *dll = nullptr;
    if (name != nullptr) *name = nullptr;
    if (ordinal != nullptr) *ordinal = 0;
    return E_NOTIMPL;  // no type here is a module of functions
  }

  HRESULT GetRefTypeInfo(HREFTYPE type, ITypeInfo** out) override {
    if (out == nullptr) return E_INVALIDARG;
    *out = nullptr;
    if (type == kDispatchReference) return MakeTypeInfo(library_, kDispatchType, out);
    if (type >= TypeCount(*library_)) return TYPE_E_ELEMENTNOTFOUND;
    return MakeTypeInfo(library_, type, out);
  }

  HRESULT AddressOfMember(MEMBERID, INVOKEKIND, PVOID* address) override {
    if (address != nullptr) *address = nullptr;
    return E_NOTIMPL;  // members have slots, not addresses
  }

  HRESULT CreateInstance(IUnknown* outer, REFIID iid, PVOID* out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (!IsClass()) return E_INVALIDARG;
    return CoCreateInstance(*Class().id, outer, CLSCTX_INPROC_SERVER, iid, out);
  }

  HRESULT GetMops(MEMBERID, BSTR* mops) override {
    if (mops != nullptr) *mops = nullptr;
    return S_OK;
  }

  HRESULT GetContainingTypeLib(ITypeLib** library, UINT* index) override {
    if (index != nullptr) *index = index_;
    if (library == nullptr) return S_OK;
    *library = nullptr;
    AddReference(library_);
    return MakeTypeLib(library_, library);
  }

 private:
  bool IsDispatch() const { return index_ == kDispatchType; }
  bool IsClass() const { return !IsDispatch() && index_ >= library_->table.interface_count; }
  bool HasMembers() const { return index_ < library_->table.interface_count; }
  const InterfaceTable& Interface() const { return *library_->table.interfaces[index_]; }
  const ClassTableRow& Class() const {
    return library_->table.classes[index_ - library_->table.interface_count];
  }

  HREFTYPE IndexOf(const InterfaceTable* table) const {
    HREFTYPE index = 0;
    while (library_->table.interfaces[index] != table) ++index;
    return index;
  }

  const MemberRow* FindMember(MEMBERID id) const {
    if (!HasMembers()) return nullptr;
    for (unsigned i = 0; i < Interface().member_count; ++i) {
      if (Interface().members[i].id == id) return &Interface().members[i];
    }
    return nullptr;
  }

  const MemberRow* FindMemberNamed(const OLECHAR* name) const {
    for (unsigned i = 0; name != nullptr && i < Interface().member_count; ++i) {
      if (EqualsIgnoringAsciiCase(Interface().members[i].name, name))
        return &Interface().members[i];
    }
    return nullptr;
  }

  static HRESULT AppendName(const OLECHAR* name, BSTR* names, UINT* count) {
    BSTR copy = SysAllocString(name);
    if (copy == nullptr) return E_OUTOFMEMORY;
    names[(*count)++] = copy;
    return S_OK;
  }

  // Objects of the library's own interfaces are described as pointers to a user-defined type.
  TYPEDESC DescribeType(ValueType type, TYPEDESC* pointee) const {
    TYPEDESC description = {};
    description.vt = type.type == VT_EMPTY ? VARTYPE{VT_VOID} : type.type;
    if (type.type != VT_DISPATCH || type.interface_name == nullptr) return description;
    for (unsigned i = 0; i < library_->table.interface_count; ++i) {
      if (!EqualsIgnoringAsciiCase(library_->table.interfaces[i]->name, type.interface_name))
        continue;
      pointee->hreftype = i;
      pointee->vt = VT_USERDEFINED;
      description.lptdesc = pointee;
      description.vt = VT_PTR;
    }
    return description;
  }

  void Describe(const MemberRow& row, UINT index, FunctionBlock& block) const {
    FUNCDESC& function = block.description;
    function.memid = row.id;
    function.lprgelemdescParam = block.elements;
    function.funckind = FUNC_DISPATCH;
    function.invkind = row.kind;
    function.callconv = CC_STDCALL;
    function.cParams = static_cast<SHORT>(row.parameters.Count());
    function.oVft = static_cast<SHORT>((kDispatchSlots + index) * sizeof(void*));
    function.elemdescFunc.tdesc = DescribeType(row.result, &block.pointee);
    for (unsigned i = 0; i < row.parameters.Count(); ++i) {
      const ParameterRow& parameter = row.parameters.rows[i];
      ELEMDESC& element = block.elements[i];
      element.tdesc = DescribeType(parameter.type, &block.pointee);
      element.paramdesc.wParamFlags = PARAMFLAG_FIN;
      if (parameter.presence != Presence::kRequired) {
        element.paramdesc.wParamFlags |= PARAMFLAG_FOPT;
        ++function.cParamsOpt;
      }
      if (parameter.presence != Presence::kDefault) continue;
      element.paramdesc.wParamFlags |= PARAMFLAG_FHASDEFAULT;
      PARAMDESCEX& preset = block.defaults[i];
      preset.cBytes = sizeof(PARAMDESCEX);
      preset.varDefaultValue.vt = parameter.type.type;
      if (parameter.type.type == VT_BOOL) {
        preset.varDefaultValue.boolVal = static_cast<VARIANT_BOOL>(parameter.default_value);
      } else {
        preset.varDefaultValue.lVal = parameter.default_value;
      }
      element.paramdesc.pparamdescex = &preset;
    }
  }

  UINT index_;
};

}  // namespace

HRESULT MakeTypeInfo(CopiedLibrary* library, UINT index, ITypeInfo** out) {
  *out = NewRuntime<TypeInfo>(library, index);
  if (*out == nullptr) return E_OUTOFMEMORY;
  AddReference(library);
  return S_OK;
}

}  // namespace mirolta::runtime
