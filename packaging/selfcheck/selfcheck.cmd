@echo off
rem selfcheck.cmd [/register] [/suites NAME,...] [/width x64] [/limit SECONDS] [/certificates FOLDER] [/report FOLDER]
rem Runs Norvik's tests on this machine and writes report\report.txt and report\report.json. README.txt says more.
setlocal
set "NATIVE=x64"
set "WIDTHS=x64,x86"
if /i "%PROCESSOR_ARCHITECTURE%"=="x86" if not defined PROCESSOR_ARCHITEW6432 (
  set "NATIVE=x86"
  set "WIDTHS=x86"
)
"%~dp0%NATIVE%\tests\selfcheck.exe" /has %WIDTHS% %*
exit /b %errorlevel%
