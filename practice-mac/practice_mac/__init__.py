"""The practice Mac: a disposable copy of this machine, set up as a Mac on which Quorlen 3 is installed.

Nothing that happens in it changes the machine outside. See README.md beside this folder."""
