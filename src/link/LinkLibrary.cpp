#include "link/LinkLibrary.h"

#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

LinkLibrary* g_library = nullptr;

}  // namespace

void SetLinkLibrary(LinkLibrary* library) {
    g_library = library;
}

void RequireLinkLibrary() {
    if (g_library == nullptr || !g_library->Installed()) Raise(ErrorNumber::CannotCreateObject);
}

std::unique_ptr<LinkFactory> CreateLinkFactory() {
    if (g_library == nullptr) Raise(ErrorNumber::CannotCreateObject);
    return g_library->CreateFactory();
}

}  // namespace nomira
