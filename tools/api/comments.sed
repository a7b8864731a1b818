# The headers' comments as Doxygen reads them: documentation, with backslashes that mean themselves.
/\/\//s,\\,\\\\,g
s,^\( *\)//\( \|$\),\1///\2,
s,\([^ /].*[^/:]\)// ,\1///< ,
s,struct std::hash<,struct hash<,
