#include "class_table.h"
#include "definition_files.h"
#include "type_library_table.h"

namespace mirolta {

void WriteAssemblyManifest(FILE* out, const Version& version, const char* processor) {
  fprintf(out,
          "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
          "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n"
          "  <assemblyIdentity type=\"win32\" name=\"Mirolta\" version=\"%u.%u.%u.0\""
          " processorArchitecture=\"%s\"/>\n"
          "  <file name=\"Mirolta.dll\">\n    <typelib tlbid=\"",
          version.major, version.minor, version.patch, processor);
  WriteGuid(out, *kTypeLibraryTable.id, true);
  fprintf(out, "\" version=\"%d.%d\" helpdir=\"\"/>\n", kTypeLibraryTable.major,
          kTypeLibraryTable.minor);
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    fputs("    <comClass clsid=\"", out);
    WriteGuid(out, *row->id, true);
    fputs("\" threadingModel=\"", out);
    WriteText(out, row->threading_model);
    fputs("\" tlbid=\"", out);
    WriteGuid(out, *kTypeLibraryTable.id, true);
    fputs("\" progid=\"", out);
    WriteText(out, row->version_independent_prog_id);
    fputs("\" description=\"", out);
    WriteText(out, row->description);
    fputs("\">\n      <progid>", out);
    WriteText(out, row->prog_id);
    fputs("</progid>\n    </comClass>\n", out);
  }
  fputs("  </file>\n", out);
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    const InterfaceTable& table = *kTypeLibraryTable.interfaces[i];
    // Calls between apartments are marshalled by the system's automation marshaler.
    fputs("  <comInterfaceExternalProxyStub name=\"", out);
    WriteText(out, table.name);
    fputs("\" iid=\"", out);
    WriteGuid(out, *table.iid, true);
    fputs("\" proxyStubClsid32=\"{00020424-0000-0000-C000-000000000046}\" tlbid=\"", out);
    WriteGuid(out, *kTypeLibraryTable.id, true);
    fputs("\"/>\n", out);
  }
  fputs("</assembly>\n", out);
}

}  // namespace mirolta
