// SPDX-License-Identifier: MIT
// Byte streams.
#pragma once

#include "mirolta/unknown.h"

MIROLTA_IDENTIFIER IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
MIROLTA_IDENTIFIER IID IID_IStream = MIROLTA_OLE_IID(0x0000000C);

typedef enum STREAM_SEEK MIROLTA_ENUM(DWORD){STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1,
                                             STREAM_SEEK_END = 2} STREAM_SEEK;
typedef enum STGTY MIROLTA_ENUM(DWORD){STGTY_STORAGE = 1, STGTY_STREAM = 2,
                                       STGTY_LOCKBYTES = 3} STGTY;
typedef enum STATFLAG MIROLTA_ENUM(DWORD){STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1} STATFLAG;
typedef enum STGC MIROLTA_ENUM(DWORD){STGC_DEFAULT = 0} STGC;

MIROLTA_CONSTANT(DWORD, STGM_READ, 0x00000000);
MIROLTA_CONSTANT(DWORD, STGM_WRITE, 0x00000001);
MIROLTA_CONSTANT(DWORD, STGM_READWRITE, 0x00000002);
MIROLTA_CONSTANT(DWORD, STGM_CREATE, 0x00001000);

typedef struct STATSTG {
  LPOLESTR pwcsName;  // freed by the caller with CoTaskMemFree
  DWORD type;
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
} STATSTG;

typedef struct ISequentialStream ISequentialStream;
typedef struct IStream IStream;

#ifdef __cplusplus
struct ISequentialStream : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) = 0;
  virtual HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) = 0;
};

struct IStream : ISequentialStream {
  virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                         ULARGE_INTEGER* position) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                           ULARGE_INTEGER* written) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                               DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                                 DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IStream** out) = 0;
};

MIROLTA_BIND_IID(ISequentialStream);
MIROLTA_BIND_IID(IStream);
#endif

typedef void* HGLOBAL;

// CreateStreamOnHGlobal makes an empty memory stream; `memory` must be null here.
MIROLTA_RUNTIME HRESULT CreateStreamOnHGlobal(HGLOBAL memory, INT delete_on_release, IStream** out);
// SHCreateStreamOnFileEx opens or, with STGM_CREATE, makes the file and returns a stream over it.
MIROLTA_RUNTIME HRESULT SHCreateStreamOnFileEx(LPCWSTR file, DWORD mode, DWORD attributes,
                                               INT create, IStream* reserved, IStream** out);
