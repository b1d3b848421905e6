' The application that the manifest opens. It leaves a note beside itself of who started it, so that one can see it ran.
Option Explicit
Dim files, folder, note
Set files = CreateObject("Scripting.FileSystemObject")
folder = files.GetParentFolderName(WScript.ScriptFullName)
Set note = files.CreateTextFile(folder & "\opened.txt", True)
note.WriteLine "script:  " & WScript.ScriptFullName
note.WriteLine "program: " & WScript.FullName
note.WriteLine "folder:  " & files.GetAbsolutePathName(".")
note.WriteLine "Stockroom is open."
note.Close
