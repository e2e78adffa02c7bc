/*
 * The names of the utilities, and the routines of kvr2/kvrcob/utilities.h that they are. For
 * inclusion where KVR_UTILITY (name, routine) says what becomes of a row; so there is no guard.
 */
#ifndef KVR_UTILITY
#define KVR_UTILITY(name, routine)
#endif

KVR_UTILITY("SYSTEM", kvr_u_system)
KVR_UTILITY("C$SYSTEM", kvr_u_system)
KVR_UTILITY("C$SLEEP", kvr_u_sleep)
KVR_UTILITY("C$TOUPPER", kvr_u_upper)
KVR_UTILITY("C$TOLOWER", kvr_u_lower)
KVR_UTILITY("C$DELETE", kvr_u_delete_file)
KVR_UTILITY("C$COPY", kvr_u_copy_file)
KVR_UTILITY("C$CHDIR", kvr_u_change_dir)
KVR_UTILITY("C$MAKEDIR", kvr_u_create_dir)
KVR_UTILITY("C$GETPID", kvr_u_process)
KVR_UTILITY("CBL_TOUPPER", kvr_u_upper)
KVR_UTILITY("CBL_TOLOWER", kvr_u_lower)
KVR_UTILITY("CBL_AND", kvr_u_and)
KVR_UTILITY("CBL_OR", kvr_u_or)
KVR_UTILITY("CBL_XOR", kvr_u_xor)
KVR_UTILITY("CBL_EQ", kvr_u_eq)
KVR_UTILITY("CBL_IMP", kvr_u_imp)
KVR_UTILITY("CBL_NOR", kvr_u_nor)
KVR_UTILITY("CBL_NOT", kvr_u_not)
KVR_UTILITY("CBL_DELETE_FILE", kvr_u_delete_file)
KVR_UTILITY("CBL_RENAME_FILE", kvr_u_rename_file)
KVR_UTILITY("CBL_COPY_FILE", kvr_u_copy_file)
KVR_UTILITY("CBL_CREATE_DIR", kvr_u_create_dir)
KVR_UTILITY("CBL_DELETE_DIR", kvr_u_delete_dir)
KVR_UTILITY("CBL_CHANGE_DIR", kvr_u_change_dir)
KVR_UTILITY("CBL_CHECK_FILE_EXIST", kvr_u_check_file)

#undef KVR_UTILITY
