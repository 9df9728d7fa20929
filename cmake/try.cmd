@echo off
rem Runs the tour with the bundle and the minihost beside this script: try
rem Or another script: try examples\find.rbs
cd /d "%~dp0"
if not "%~1"=="" goto script
minihost.exe examples\tour.rbs
set status=%errorlevel%
rem Whoever has clicked on this file sees nothing otherwise.
pause
exit /b %status%
:script
minihost.exe %*
exit /b %errorlevel%
