#include "commands/documents/WriteDocuments.h"

namespace PosUtil {

void WriteDocuments(const DocumentArgument& argument, const Writer& writer, Style style,
                    Session& session, Output& out) {
  Progress& progress = session.TheProgress();
  progress.Show(out.Descriptor());
  const bool isOne = argument.HowMany() == Extent::kOne;
  const WriteOptions options = {.fOnOneLine = !isOne, .fStyle = style};
  const auto documents = argument.Open(session);
  std::size_t number = 0;
  while (const KAP_T_MT::CPOSObject object = documents->Next()) {
    if (++number > 1) out.Put(writer.kBetween);
    if (isOne) {  // of several, reading tells how far it is
      progress.Begin("writing", 0);
      out.SetProgress(progress);
    }
    writer.Write(object, argument.Name(number), options, out);
    session.TheLibrary().CheckReports(argument.Name(number));
  }
}

}  // namespace PosUtil
