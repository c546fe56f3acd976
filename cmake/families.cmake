# A family directory calls kfpg_family(<name>) so that the exports test knows
# which part of the header the build implements.
function(kfpg_family name)
  set_property(GLOBAL APPEND PROPERTY KFPG_FAMILIES ${name})
endfunction()
