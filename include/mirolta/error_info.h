// SPDX-License-Identifier: MIT
// Error descriptions, one slot a thread.
#pragma once

#include "mirolta/dispatch.h"

MIROLTA_IDENTIFIER IID IID_IErrorInfo = {
    0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
MIROLTA_IDENTIFIER IID IID_ICreateErrorInfo = {
    0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
MIROLTA_IDENTIFIER IID IID_ISupportErrorInfo = {
    0xDF0B3D60, 0x548F, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};

typedef struct IErrorInfo IErrorInfo;
typedef struct ICreateErrorInfo ICreateErrorInfo;
typedef struct ISupportErrorInfo ISupportErrorInfo;

#ifdef __cplusplus
struct IErrorInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* help_file) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* help_context) = 0;
};

struct ICreateErrorInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR help_file) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD help_context) = 0;
};

struct ISupportErrorInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) = 0;
};

MIROLTA_BIND_IID(IErrorInfo);
MIROLTA_BIND_IID(ICreateErrorInfo);
MIROLTA_BIND_IID(ISupportErrorInfo);
#endif

MIROLTA_RUNTIME HRESULT CreateErrorInfo(ICreateErrorInfo** out);
MIROLTA_RUNTIME HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info);
// GetErrorInfo returns the thread's error object and empties the slot; S_FALSE if there is none.
MIROLTA_RUNTIME HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** out);
