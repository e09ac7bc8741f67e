#pragma once

class CMainFrame;

// Keeps the frame's document on the session bus: an object for a document held for writing
// (a read-only copy is left to the program that holds the file), none otherwise. Cheap when
// nothing changed; call it whenever the document or its path may have changed.
void UpdateDocumentService(CMainFrame& frame);
