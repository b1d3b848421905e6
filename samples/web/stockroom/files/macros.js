// Copied only where permit.xml has the extension js.
var stockroomMacros = [];
