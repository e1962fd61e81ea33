// A project that only knows the installed library. Ends with 1 unless the resource texts are found
// and the file loads.
#include <keltrun2/keltrun2.h>

#include <cstdio>

int main(int argc, char** argv) {
  keltrun::SetStartup({.Folder = KELTRUN2_DATA});
  const auto root = std::make_shared<keltrun::clsKeltrun2>();
  if (argc != 2 || !root->FileControl()->LoadLapFile(argv[1])) return 1;
  std::printf("%s %d\n", root->Version(false).c_str(), root->ClassCount());
  return root->FileControl()->FileLoadFilter().empty() ? 1 : 0;
}
