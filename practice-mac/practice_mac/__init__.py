"""The practice Mac: a throw-away copy of this machine, set up as a Mac on which Quorlen 3 is installed.

What is deleted, restarted or asked for in there never reaches the machine outside. See README.md beside this folder."""
