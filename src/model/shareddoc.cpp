#include "model/shareddoc.h"
#include "platform/sharedfile.h"

// Placeholder until the shared-file layer lands: keeps the model linking.
CSharedDoc::CSharedDoc() = default;
CSharedDoc::~CSharedDoc() = default;
bool CSharedDoc::OnOpenDocument(const std::string&, platform::Prompter&) { return false; }
bool CSharedDoc::OnSaveDocument(const std::string&, platform::Prompter&) { return false; }
void CSharedDoc::CloseHeldFile() {}
