! Files of the three encodings, opened and found to end.
module file_units
  implicit none
  private
  public :: opened, expect_end

contains

  integer function opened(path, encoding, status)
    character(*), intent(in) :: path, encoding, status
    select case (encoding)
    case ('unformatted')
      open (newunit=opened, file=path, status=status, form='unformatted', access='sequential')
    case ('binary')
      open (newunit=opened, file=path, status=status, form='unformatted', access='stream')
    case ('formatted')
      open (newunit=opened, file=path, status=status, form='formatted')
    case default
      error stop 'unknown encoding'
    end select
  end function opened

  ! A file that goes on behind its last record has another layout than the one it was read in.
  subroutine expect_end(u, encoding)
    integer, intent(in) :: u
    character(*), intent(in) :: encoding
    character(1) :: c
    integer :: status
    select case (encoding)
    case ('formatted')
      do
        read (u, '(a)', iostat=status) c
        if (status /= 0 .or. c /= ' ') exit
      end do
    case ('unformatted')
      read (u, iostat=status)
    case default
      read (u, iostat=status) c
    end select
    if (.not. is_iostat_end(status)) error stop 'the file goes on behind its last record'
  end subroutine expect_end

end module file_units
